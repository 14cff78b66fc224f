# How every target of the project is compiled: warnings are errors, and the sanitizers that the
# preset asks for reach compiler and linker alike.

add_library(norvane_compile INTERFACE)
target_include_directories(norvane_compile INTERFACE ${PROJECT_SOURCE_DIR}/include
                                                     ${PROJECT_SOURCE_DIR}/src)
target_compile_options(
  norvane_compile
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Werror
            -Wshadow
            -Wconversion
            -Wsign-conversion
            -Wnon-virtual-dtor
            -Wold-style-cast
            -Wcast-align
            # GCC 12 finds overlaps in std::string's own operator+ (its bug 105651).
            $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(CMAKE_UNITY_BUILD)
  # What one source calls a local name, another that it was joined with may have in its unnamed
  # namespace. The release build compiles each source by itself, with these warnings.
  target_compile_options(norvane_compile INTERFACE -Wno-shadow
                                                   $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(NORVANE_SANITIZE)
  target_compile_options(norvane_compile INTERFACE -fsanitize=${NORVANE_SANITIZE}
                                                   -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # An index past the end of a view often stays inside the block that the view shows a part of.
  target_compile_definitions(norvane_compile INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(norvane_compile INTERFACE -fsanitize=${NORVANE_SANITIZE})
endif()

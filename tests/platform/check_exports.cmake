# Fails if the shared library LIBRARY exports a symbol without the prefix or the version of the
# platform layer, or nothing at all. NM is the tool that lists symbols.
execute_process(
  COMMAND ${NM} --dynamic --defined-only ${LIBRARY}
  OUTPUT_VARIABLE listing
  COMMAND_ERROR_IS_FATAL ANY)

string(REGEX MATCHALL "[^\n]+" lines "${listing}")
list(FILTER lines EXCLUDE REGEX " A NORVANE_")
if(NOT lines)
  message(FATAL_ERROR "${LIBRARY} exports nothing")
endif()
list(FILTER lines EXCLUDE REGEX " norvane_[A-Za-z0-9]+@@NORVANE_[0-9.]+$")
if(lines)
  list(JOIN lines "\n" text)
  message(FATAL_ERROR "${LIBRARY} exports more than the platform's functions:\n${text}")
endif()

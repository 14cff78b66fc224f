# Installs the build, moves the tree, asks revcheck there for a verdict, and builds and runs the
# example programs with the CMake package there.
set(work ${BUILD}/installed-tree)
set(tree ${work}/moved)
file(REMOVE_RECURSE ${work})

# run(EXPECTED COMMAND...): the command succeeds and prints what matches.
function(run expected)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE code)
  if(NOT code EQUAL 0 OR NOT output MATCHES "${expected}")
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}: ${code}\n${output}${errors}")
  endif()
endfunction()

run("" ${CMAKE_COMMAND} --install ${BUILD} --prefix ${work}/first)
file(RENAME ${work}/first ${tree})
set(stores ${SOURCE}/examples/stores)
run("GOOD" ${tree}/${BINDIR}/revcheck --root ${stores}/Root --ca ${stores}/CA --cache-only
    ${SOURCE}/examples/rsa-good.pem)

run("" ${CMAKE_COMMAND} -G ${GENERATOR} -S ${SOURCE}/tests/packaging/program -B ${work}/program
    -DCMAKE_PREFIX_PATH=${tree} -DCMAKE_C_COMPILER=${COMPILER}
    -DEXAMPLES=${SOURCE}/examples)
run("" ${CMAKE_COMMAND} --build ${work}/program)
run("" openssl x509 -in ${SOURCE}/examples/rsa-revoked.pem -outform DER -out ${work}/revoked.der)
run("revoked, reason 1" ${work}/program/verdict ${stores}/Root ${stores}/CA ${work}/revoked.der)
run("certificate_listed reason=1.*\n-> revoked" ${work}/program/why ${stores}/Root ${stores}/CA
    ${work}/revoked.der)

# Without its library a GOST certificate cannot be checked, and the reason is told.
file(GLOB_RECURSE gost_library ${tree}/*/norvane_gost.so)
file(REMOVE ${gost_library})
execute_process(
  COMMAND ${tree}/${BINDIR}/revcheck --root ${stores}/Root --ca ${stores}/CA --cache-only
          ${SOURCE}/examples/gost-good.pem
  OUTPUT_VARIABLE output
  RESULT_VARIABLE code)
if(NOT code EQUAL 2 OR NOT output MATCHES "why +signatures of algorithm 1.2.643[0-9.]+ are not verified")
  message(FATAL_ERROR "without ${gost_library}: ${code}\n${output}")
endif()

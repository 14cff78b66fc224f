# Fails unless the module MODULE exports the two conversions and, besides them, at most the entry for
# revocation. NM is the tool that lists symbols.
execute_process(
  COMMAND ${NM} --dynamic --defined-only --format=just-symbols ${MODULE}
  OUTPUT_VARIABLE listing
  COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" symbols "${listing}")
list(REMOVE_ITEM symbols CertDllVerifyRevocation)
if(NOT symbols STREQUAL "NorvaneXERConvertPublicKeyInfo;NorvaneXEREncodePublicKeyAndParameters")
  message(FATAL_ERROR "${MODULE} exports ${symbols}")
endif()

# Runs solve with the arguments of ARGS (separated by '|') and checks its exit code
# (EXPECTED_RC) and that its output, standard output and error together, matches the
# regular expression EXPECTED_TEXT. A crash gives no exit code of 0 or 2 and fails.
string(REPLACE "|" ";" args "${ARGS}")
execute_process(COMMAND ${SOLVE} ${args} RESULT_VARIABLE rc OUTPUT_VARIABLE out
                ERROR_VARIABLE err)
message("${out}${err}")
if(NOT "${rc}" STREQUAL "${EXPECTED_RC}")
  message(FATAL_ERROR "solve exited with '${rc}', expected ${EXPECTED_RC}")
endif()
if(NOT "${out}${err}" MATCHES "${EXPECTED_TEXT}")
  message(FATAL_ERROR "the output does not match '${EXPECTED_TEXT}'")
endif()

# Writes OUTPUT, INPUT as the sed command EDIT changes it; that it changes nothing is an error.
execute_process(COMMAND sed "${EDIT}" ${INPUT} OUTPUT_VARIABLE edited COMMAND_ERROR_IS_FATAL ANY)
file(READ ${INPUT} original)
if(edited STREQUAL original)
  message(FATAL_ERROR "the edit changes nothing: ${EDIT}")
endif()
file(WRITE ${OUTPUT} "${edited}")

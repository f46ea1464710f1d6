# Runs gdb and compares the lines that it was told to name, "loaded: $1 = ...", with those expected.
execute_process(
    COMMAND ${GDB} -nx -batch -iex "set auto-load off" -x ${PRINTERS} -x ${COMMANDS}
            --args ${PROGRAM} ${LOG}
    OUTPUT_VARIABLE said ERROR_VARIABLE errors RESULT_VARIABLE result)
string(REPLACE ";" "," said "${said}")
string(REGEX MATCHALL "[a-z]+: \\$[0-9]+ = [^\n]*" lines "${said}")
set(shown "")
foreach(line IN LISTS lines)
    string(REGEX REPLACE ": \\$[0-9]+ = " ": " line "${line}")
    string(REGEX REPLACE "0x[0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f]+" "PLACE" line "${line}")
    string(APPEND shown "${line}\n")
endforeach()
file(READ ${EXPECTED} expected)
string(REPLACE ";" "," expected "${expected}")
if(shown STREQUAL "" OR NOT shown STREQUAL expected)
    message(FATAL_ERROR "gdb (${result}) showed\n${shown}instead of\n${expected}${errors}\n${said}")
endif()

# Runs a program once and checks its exit status and output:
#
#   cmake -DPROGRAM=EXE [-DEMULATOR=RUNNER] [-DARG1=... -DARG2=...]
#         [-DSTDIN_FILE=FILE] -DCODE=N
#         [-DSTDOUT=TEXT | -DSTDOUT_FILE=FILE] [-DSTDOUT_MATCHES=REGEX] [-DSTDOUT_JSON=ON]
#         [-DSTDERR=TEXT | -DSTDERR_FILE=FILE] [-DSTDERR_MATCHES=REGEX]
#         -P expect.cmake
#
# STDOUT / STDERR: the whole output is TEXT and one newline ("" for none).
# FILE: the whole output is the file's text. Line ends are compared as "\n".
# Arguments are ARG1, ARG2, ... in order: no shell and no list splitting
# comes between a test and the program. Standard input is STDIN_FILE, else
# empty.
cmake_minimum_required(VERSION 3.25)

set(args)
foreach(i RANGE 1 20)
  if(DEFINED ARG${i})
    list(APPEND args "${ARG${i}}")
  endif()
endforeach()

if(NOT DEFINED STDIN_FILE)
  if(WIN32)
    set(STDIN_FILE NUL)
  else()
    set(STDIN_FILE /dev/null)
  endif()
endif()
execute_process(
  COMMAND ${EMULATOR} ${PROGRAM} ${args}
  INPUT_FILE "${STDIN_FILE}"
  RESULT_VARIABLE code
  OUTPUT_VARIABLE out
  ERROR_VARIABLE err)
string(REPLACE "\r\n" "\n" out "${out}")
string(REPLACE "\r\n" "\n" err "${err}")

set(faults "")
function(fault text)
  set(faults "${faults}${text}\n" PARENT_SCOPE)
endfunction()

if(NOT "${code}" STREQUAL "${CODE}")
  fault("exit status ${code}, expected ${CODE}")
endif()

foreach(stream IN ITEMS STDOUT STDERR)
  if(stream STREQUAL "STDOUT")
    set(actual "${out}")
  else()
    set(actual "${err}")
  endif()
  unset(expected)
  if(DEFINED ${stream})
    set(expected "${${stream}}\n")
    if("${${stream}}" STREQUAL "")
      set(expected "")
    endif()
  elseif(DEFINED ${stream}_FILE)
    file(READ "${${stream}_FILE}" expected)
    string(REPLACE "\r\n" "\n" expected "${expected}")
  endif()
  if(DEFINED expected AND NOT "${actual}" STREQUAL "${expected}")
    fault("${stream} differs; expected:\n${expected}--- got:\n${actual}---")
  endif()
  if(DEFINED ${stream}_MATCHES AND NOT "${actual}" MATCHES "${${stream}_MATCHES}")
    fault("${stream} does not match '${${stream}_MATCHES}':\n${actual}---")
  endif()
endforeach()

if(STDOUT_JSON)
  string(JSON type ERROR_VARIABLE json_error TYPE "${out}")
  if(json_error)
    fault("STDOUT is not JSON: ${json_error}")
  endif()
endif()

if(faults)
  list(JOIN args " " shown)
  message(FATAL_ERROR "${PROGRAM} ${shown}\n${faults}stdout:\n${out}stderr:\n${err}")
endif()

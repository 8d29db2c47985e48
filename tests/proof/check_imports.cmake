cmake_minimum_required(VERSION 3.25)

# What the library may ask of its process: the two platform libraries, blocks of memory moved, and
# libm. No heap, locale, file or environment.
set(allowed property_get __android_log_print memcpy memmove memset sqrt sqrtf acosf cosf sinf
  __stack_chk_fail)
set(start_up _ITM_deregisterTMCloneTable _ITM_registerTMCloneTable __cxa_finalize __gmon_start__)

execute_process(COMMAND ${NM} -D --undefined-only --format=posix ${LIBRARY}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${symbols}")
set(found)
foreach(line IN LISTS lines)
  string(REGEX REPLACE "[@ ].*" "" symbol "${line}")
  list(APPEND found ${symbol})
  if(NOT symbol IN_LIST allowed AND NOT symbol IN_LIST start_up)
    message(SEND_ERROR "${LIBRARY} imports ${symbol}")
  endif()
endforeach()
foreach(symbol property_get __android_log_print)
  if(NOT symbol IN_LIST found)
    message(SEND_ERROR "${LIBRARY} does not import ${symbol}: is this the library?")
  endif()
endforeach()

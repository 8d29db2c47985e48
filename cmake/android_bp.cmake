# Writes Android.bp as library.cmake has it: cmake -DOUTPUT=FILE -P cmake/android_bp.cmake
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/library.cmake)

function(set_lines variable depth)
  string(REPEAT "    " ${depth} indent)
  set(lines "")
  foreach(entry IN LISTS ARGN)
    string(APPEND lines "${indent}\"${entry}\",\n")
  endforeach()
  set(${variable} "${lines}" PARENT_SCOPE)
endfunction()

set_lines(sources 2 ${IMGTUNE_SOURCES})
set_lines(compile_options 2 ${IMGTUNE_FLOATING_POINT} ${IMGTUNE_WARNINGS} ${IMGTUNE_LIBRARY_OPTIONS}
  ${IMGTUNE_RELEASE_OPTIONS})
set_lines(arm64_options 4 ${IMGTUNE_ARM64_OPTIONS})
set_lines(link_options 2 ${IMGTUNE_LINK_OPTIONS} ${IMGTUNE_ANDROID_LINK_OPTIONS})
configure_file(${CMAKE_CURRENT_LIST_DIR}/Android.bp.in ${OUTPUT} @ONLY NEWLINE_STYLE UNIX)

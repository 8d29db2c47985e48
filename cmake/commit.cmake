# IMGTUNE_COMMIT, IMGTUNE_DATE: of which commit this is, and its day. A tree without git is told by
# -DIMGTUNE_COMMIT=... and SOURCE_DATE_EPOCH, or tells none, and the day on which it was configured.
set(IMGTUNE_COMMIT "" CACHE STRING "The commit that is built; empty: as git says")
set(git_of_project git -C ${PROJECT_SOURCE_DIR})
set(IMGTUNE_COMMIT_TOLD "")
string(TIMESTAMP IMGTUNE_DATE "%Y-%m-%d" UTC)
if(IMGTUNE_COMMIT)
  set(IMGTUNE_COMMIT_TOLD " (${IMGTUNE_COMMIT})")
elseif(EXISTS ${PROJECT_SOURCE_DIR}/.git)
  execute_process(COMMAND ${git_of_project} log -1 --abbrev=12 --format=%h%n%cs
    OUTPUT_VARIABLE answer ERROR_QUIET)
  if(answer MATCHES "^([0-9a-f]+)\n([0-9-]+)")
    set(IMGTUNE_COMMIT_TOLD " (${CMAKE_MATCH_1})")
    set(IMGTUNE_DATE ${CMAKE_MATCH_2})
    execute_process(COMMAND ${git_of_project} rev-parse --path-format=absolute --git-path logs/HEAD
      OUTPUT_VARIABLE log OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${log})
  endif()
endif()

# The lists of library.cmake as targets.

# Warnings and the floating-point rule for everything that is built here.
add_library(imgtune_flags INTERFACE)
target_compile_options(imgtune_flags INTERFACE ${IMGTUNE_FLOATING_POINT} ${IMGTUNE_WARNINGS})
if(IMGTUNE_SANITIZE)
  add_compile_options(-fsanitize=${IMGTUNE_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${IMGTUNE_SANITIZE})
endif()

# Where AddressSanitizer tells a bad address, most of a compilation goes into checks that would tell it
# again.
function(imgtune_sanitize_once target)
  if(IMGTUNE_SANITIZE MATCHES "address")
    target_compile_options(${target} PRIVATE
      -fno-sanitize=null,object-size,alignment,vptr,pointer-overflow)
  endif()
endfunction()

# For large targets that take longer to compile than to run, and are not fuzzed.
function(imgtune_compile_quickly target)
  if(IMGTUNE_SANITIZE)
    imgtune_sanitize_once(${target})
    target_compile_options(${target} PRIVATE -O0
      $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=fuzzer-no-link>)
  else()
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
  endif()
endfunction()

add_library(imgtune_library_flags INTERFACE)
target_link_libraries(imgtune_library_flags INTERFACE imgtune_flags)
target_compile_options(imgtune_library_flags INTERFACE ${IMGTUNE_LIBRARY_OPTIONS}
  $<$<CONFIG:Release>:${IMGTUNE_RELEASE_OPTIONS}>)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
  target_compile_options(imgtune_library_flags INTERFACE ${IMGTUNE_ARM64_OPTIONS})
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
  target_compile_options(imgtune_library_flags INTERFACE ${IMGTUNE_GXX_X86_OPTIONS})
endif()

add_library(imgtune_library_link INTERFACE)
# libc and libm are named whether a build's inlining leaves a call to them or not.
target_link_options(imgtune_library_link INTERFACE
  -Wl,--version-script=${PROJECT_SOURCE_DIR}/${IMGTUNE_VERSION_SCRIPT}
  -Wl,--no-as-needed,-lm,-lc -Wl,--as-needed ${IMGTUNE_LINK_OPTIONS})
if(ANDROID)
  # Of the C++ library the headers alone are used: whatever it, the start-up files or the unwinder
  # were to be linked for is an undefined symbol.
  target_link_options(imgtune_library_link INTERFACE -nostdlib ${IMGTUNE_ANDROID_LINK_OPTIONS})
endif()
if(NOT IMGTUNE_SANITIZE)
  target_link_options(imgtune_library_link INTERFACE -Wl,--no-undefined)
endif()

# Puts a target's files together as IMGTUNE_UNITY says.
function(imgtune_unity target)
  if(NOT IMGTUNE_UNITY STREQUAL "")
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${IMGTUNE_UNITY})
  endif()
endfunction()

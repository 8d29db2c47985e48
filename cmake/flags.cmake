# Warnings and the floating-point rule for everything that is built here.
add_library(imgtune_flags INTERFACE)
target_compile_options(imgtune_flags INTERFACE
  -ffp-contract=off -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
  -Wold-style-cast -Wcast-qual -Wnon-virtual-dtor -Wimplicit-fallthrough -Werror)
if(IMGTUNE_SANITIZE)
  add_compile_options(-fsanitize=${IMGTUNE_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${IMGTUNE_SANITIZE})
endif()

# The library: nothing exported unless marked, no C++ runtime. Without errno square roots
# are single instructions, without traps choices between quotients vectorise; no result depends on
# either.
add_library(imgtune_library_flags INTERFACE)
target_link_libraries(imgtune_library_flags INTERFACE imgtune_flags)
target_compile_options(imgtune_library_flags INTERFACE
  -fvisibility=hidden -fvisibility-inlines-hidden -fno-exceptions -fno-rtti
  -fno-threadsafe-statics -fno-math-errno -fno-trapping-math -fno-semantic-interposition)

add_library(imgtune_library_link INTERFACE)
# libc and libm are named whether a build's inlining leaves a call to them or not.
target_link_options(imgtune_library_link INTERFACE
  -Wl,--version-script=${CMAKE_CURRENT_LIST_DIR}/exports.map
  -Wl,--no-as-needed,-lm,-lc -Wl,--as-needed -Wl,-z,now -Wl,-Bsymbolic-functions)
if(NOT IMGTUNE_SANITIZE)
  target_link_options(imgtune_library_link INTERFACE -Wl,--no-undefined)
endif()

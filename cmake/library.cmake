# How the library is compiled, for every build: the CMake targets read these lists, and Android.bp is
# made from them (scripts/android-bp.sh --renew).

set(IMGTUNE_CXX_STANDARD 20)

set(IMGTUNE_SOURCES
  ccm/blend.cpp
  ccm/gain_clip.cpp
  ccm/gain_projection.cpp
  ccm/gamut.cpp
  ccm/interpolation.cpp
  ccm/polynomial.cpp
  ccm/rwb_separation.cpp
  ccm/smooth_ccm.cpp
  ccm/tuned_matrices.cpp
  color/color_map.cpp
  color/global.cpp
  color/hue.cpp
  color/lsp.cpp
  color/luma.cpp
  color/parameters.cpp
  color/saturation.cpp
  color/saturation_gain_by_luma.cpp
  color/scalar_rules.cpp
  color/smooth_color.cpp
  common/debug_switch.cpp
  matrix/eigen.cpp
  matrix/matrix3.cpp
)

set(IMGTUNE_WARNINGS
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wcast-qual
  -Wnon-virtual-dtor -Wimplicit-fallthrough -Werror)

# Everywhere: a product is rounded before it is added.
set(IMGTUNE_FLOATING_POINT -ffp-contract=off)

# The library: nothing exported unless marked, no C++ runtime. Without errno square roots are single
# instructions, without traps choices between quotients vectorise; no result depends on either.
set(IMGTUNE_LIBRARY_OPTIONS
  -fvisibility=hidden -fvisibility-inlines-hidden -fno-exceptions -fno-rtti
  -fno-threadsafe-statics -fno-math-errno -fno-trapping-math -fno-semantic-interposition)
set(IMGTUNE_RELEASE_OPTIONS -O3)
set(IMGTUNE_ARM64_OPTIONS -mbranch-protection=standard)

set(IMGTUNE_VERSION_SCRIPT cmake/exports.map)
set(IMGTUNE_LINK_OPTIONS
  -Wl,-z,now -Wl,-z,relro -Wl,-z,noexecstack -Wl,-z,text -Wl,-Bsymbolic-functions)
# Segments for pages of 4 KiB and 16 KiB; relative relocations as Android 9 and later read them.
set(IMGTUNE_ANDROID_LINK_OPTIONS
  -Wl,-z,max-page-size=16384 -Wl,--pack-dyn-relocs=relr -Wl,--use-android-relr-tags
  -Wl,--build-id=sha1)

# g++ 12's SLP vectoriser drops roundings to float between doubles; these files live by them.
set(IMGTUNE_SOURCES_WITHOUT_GXX_SLP ccm/gain_projection.cpp matrix/eigen.cpp)

# g++ 12 makes `rep stos` and `rep movs`, which take long to start, of what is zeroed or copied in the
# hundreds of bytes; vectors do it on x86.
set(IMGTUNE_GXX_X86_OPTIONS
  -mmemset-strategy=vector_loop:-1:noalign -mmemcpy-strategy=vector_loop:-1:noalign)

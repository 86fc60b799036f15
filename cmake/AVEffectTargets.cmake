# What every target of the project is built with, in one place.

set(CMAKE_CXX_FLAGS_RELEASE "-O2")
set(CMAKE_CXX_FLAGS_DEBUG "-O0 -g -D_GLIBCXX_ASSERTIONS")
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_library(aveffect_options INTERFACE)
target_compile_options(aveffect_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
  # Assertions are part of the contract and stay active in every build type.
  -UNDEBUG
  # Results are the same on every processor: no fused multiply-add behind the formulas' back.
  -ffp-contract=off
  # Error records and assertions name files relative to the source tree, not one machine's paths.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
  target_compile_options(aveffect_options INTERFACE -fsigned-char) # as on that one
endif()
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # A source's own types count as a header's where several sources are one unit.
  target_compile_options(aveffect_options INTERFACE -Wno-subobject-linkage)
endif()
# A mistake of ours or of what we read shall end in a stop and not in somebody else's hands: frames and jumps are guarded,
# copies checked, and no table that calls go through stays writable. Sanitizers look at the same places themselves.
include(CheckPIESupported)
check_pie_supported()
if(NOT AVEFFECT_SANITIZE)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    set(marked_jumps -mbranch-protection=standard)
  elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
    set(marked_jumps -fcf-protection=full)
  endif()
  target_compile_options(aveffect_options INTERFACE
    -fstack-protector-strong -fstack-clash-protection ${marked_jumps}
    # The library's checks of sizes need an optimised build.
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=3>)
  target_link_options(aveffect_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
endif()
if(AVEFFECT_SANITIZE)
  target_compile_options(aveffect_options INTERFACE
    -fsanitize=${AVEFFECT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g -O1)
  target_link_options(aveffect_options INTERFACE -fsanitize=${AVEFFECT_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Between the checks g++ loses sight of which optional values are there.
    target_compile_options(aveffect_options INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()

if(AVEFFECT_FUZZ)
  target_compile_options(aveffect_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

find_package(PkgConfig REQUIRED)
set(AVEFFECT_FFMPEG libavformat libavcodec libavfilter libswscale libswresample libavutil)
pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET ${AVEFFECT_FFMPEG})

# Places a program or library of the set that lies side by side: found through a run path of $ORIGIN.
function(aveffect_side_by_side target)
  set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN")
endfunction()

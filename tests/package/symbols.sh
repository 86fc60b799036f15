#!/usr/bin/env bash
# The plug-in exports its two factories; what it asks for is the runtime's and the companions' alone.
set -euo pipefail
bin=$1
failed=0
fail() { echo "$*"; failed=1; }

# An exported version name counts as the factories' own.
exports=$(nm -D --defined-only --without-symbol-versions "$bin/libAVEffect.so" | awk '$2 != "A" {print $3}' | sort | tr '\n' ' ')
[ "$exports" = "CreateAudioProc CreateVideoProc " ] || fail "the plug-in exports: $exports"

companions=$(nm -D --defined-only --without-symbol-versions "$bin/libAVBaseTools.so" "$bin/libAVBaseMedia.so" | awk 'NF == 3 {print $3}')
while read -r kind symbol; do
  [ "$kind" = w ] && continue
  case $symbol in *@GLIBC_* | *@GLIBCXX_* | *@CXXABI_* | *@GCC_*) continue ;; esac
  grep -qxF "$symbol" <<<"$companions" || fail "the plug-in needs $symbol, which is neither the runtime's nor a companion's"
done < <(nm -D --undefined-only "$bin/libAVEffect.so" | awk '{print $(NF-1), $NF}')

for library in libAVEffect libAVBaseTools libAVBaseMedia; do
  readelf -d "$bin/$library.so" | grep -q "SONAME.*\[$library.so\]" || fail "$library.so has another SONAME"
done
for file in libAVEffect.so libAVBaseMedia.so aveffect; do
  readelf -d "$bin/$file" | grep -qE '(RUNPATH|RPATH).*\[\$ORIGIN\]' || fail "$file has no run path of \$ORIGIN"
done
for name in GetBaseException ReleaseBaseException GetBaseLogger AVBasedMemCopy AVBasedGetCPUFeatures \
  AVBasedSetCPUFeatureMask CreateImageConverter CreateImageConverterEx CreateRawVideoFrameCropPan CreateAudioResampler; do
  grep -qxF "$name" <<<"$companions" || fail "no companion exports $name"
done

# The sound plug-ins export their entry and need neither locks nor files nor the libraries beside them.
for module in ladspa/aveffect.so lv2/aveffect.lv2/aveffect.so; do
  exports=$(nm -D --defined-only "$bin/../lib/$module" | awk '{print $3}')
  [ "$exports" = "${module%%/*}_descriptor" ] || fail "$module exports: $exports"
  while read -r symbol; do
    case $symbol in
      _Znw* | _Zdl* | _ZSt7nothrow | __cxa_guard_* | __gxx_personality_v0 | _ZTV*__cxxabiv1* | __stack_chk_fail | memcpy | memmove | round*) ;;
      *) fail "$module needs $symbol" ;;
    esac
  done < <(nm -D --undefined-only --without-symbol-versions "$bin/../lib/$module" | awk '$1 != "w" {print $2}')
done
# The frei0r modules export the interface's functions, the library behind them what they call; what they drag into a program is the runtime.
for module in "$bin"/../lib/frei0r-1/*.so; do
  if [ "${module##*/}" = libaveffect_frei0r.so ]; then own='^_ZN8aveffect6frei0r6module' needed=runtime; else own='^f0r_' needed=libaveffect_frei0r.so; fi
  nm -D --defined-only --without-symbol-versions "$module" | awk '{print $3}' | grep -v "$own" && fail "$module exports these"
  readelf -d "$module" | grep NEEDED | grep -vE "\[($needed|libstdc\+\+|libm|libgcc_s|libc|ld-linux[^]]*)\.?(so.*)?\]" && fail "$module needs these"
done
exit $failed

#!/usr/bin/env bash
# What pip makes of the source works by itself, away from where it was built: wheel.sh SOURCE BUILD PYTHON
set -euo pipefail
source=$1 build=$2 python=$3
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT
AVEFFECT_BUILD_DIR=$build "$python" -m pip install --quiet --no-deps --no-index --no-cache-dir --root-user-action=ignore --target "$work/site" "$source"
cd "$work"
PYTHONPATH=$work/site PYTHONDONTWRITEBYTECODE=1 "$python" -c '
import aveffect, numpy, sys
assert aveffect.Effect("invert")(numpy.zeros((4, 4, 3), numpy.uint8)).all()
mapped = {line.split()[-1] for line in open("/proc/self/maps") if "libAV" in line}
assert mapped and all(path.startswith(sys.argv[1]) for path in mapped), mapped' "$work/site"
"$python" -m pip list --path "$work/site" | grep -q '^aveffect '

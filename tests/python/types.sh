#!/usr/bin/env bash
# Holds the package and its examples to their types, and the stubs to the module: types.sh SOURCE BUILD PYTHON
set -euo pipefail
source=$1 build=$2 python=$3
"$python" -c 'import mypy' 2>/dev/null || { echo "mypy is not there"; exit 77; }
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT
cd "$work"
export MYPYPATH=$build/python PYTHONPATH=$build/python
check() { "$python" -m mypy --python-executable "$python" --cache-dir "$work/cache" "$@"; }
failed=0

(cd "$source/python" && check --strict-equality --warn-unused-ignores aveffect) || failed=1
check --ignore-missing-imports "$source"/examples/python/*.py || failed=1
# Who uses the package is told of mistakes.
echo 'import aveffect; aveffect.Effect(3); aveffect.Chain(["gray"])(None, order=1)' >wrong.py
[ "$(check wrong.py | grep -c 'arg-type')" = 2 ] || { echo "mistakes pass"; failed=1; }
# Of classes made in C++ the metaclass differs; names from typing are taken for the package's own.
printf '%s\n' 'aveffect\._core\.(Chain|Sound|Transition)' 'aveffect\._[a-z]+\.(Iterable|Mapping)' >known
"$python" -m mypy.stubtest --allowlist known --ignore-unused-allowlist aveffect || failed=1
exit $failed

#!/usr/bin/env bash
# The manifest keeps to the schema that Kubernetes publishes: kubernetes.sh BIN_DIR NODE_MODULES
# shellcheck source=tests/sharing/farm.sh
. "$(dirname "$0")/farm.sh"

[ -d "$2/kubernetes-models" ] || { echo "SKIPPED: kubernetes-models is not there"; exit 77; }
export NODE_PATH=$2
cat >validate.js <<'END'
const { readFileSync } = require("fs");
const { Job } = require("kubernetes-models/batch/v1/Job");
const text = readFileSync(process.argv[2], "utf8").replace(/^#.*$/gm, "");
for (const part of text.split(/^---$/m)) new Job(JSON.parse(part)).validate();
END
aveffect plan plan --chunks 3 --as kubernetes render steady.mp4 part.mkv -e invert >jobs.yaml
node validate.js jobs.yaml
sed 's/"completions": 4/"completions": "4"/' jobs.yaml >wrong.yaml
! node validate.js wrong.yaml 2>/dev/null || fail "the schema takes anything"

# The command runs as it stands there, with the number that Kubernetes gives each pod.
grep -o 'exec aveffect work[^"]*' jobs.yaml >command
for index in 0 1 2 3; do JOB_COMPLETION_INDEX=$index sh -c "$(cat command)"; done
sh -c "$(grep -o 'exec aveffect finish[^"]*' jobs.yaml)"
aveffect render steady.mp4 whole.mkv -e invert --progress none
[ "$(contents part.mkv | wc -l)" = "$(contents whole.mkv | wc -l)" ] || fail "the film is not whole"

#!/usr/bin/env bash
# Asks bash, zsh and fish, each at work itself, how they go on with the lines of cases.txt: completion.sh SHARE
# Only what stands behind the last : or = of a word is compared, as bash has no more to say.
set -euo pipefail
export share=$1 here work asked_lines found
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/files" "$work/files/outputs"
cd "$work/files"
touch one.mp4 'two words.mp4' take:1.mp4
asked_lines=$work/lines
sed 's/|[^|]*$//' "$here/cases.txt" >"$asked_lines"

in_bash() {
  # M-* inserts all completions. What the shell makes of a line shows after the blank before its last word.
  local line words key
  while IFS= read -r line; do
    words=($line)
    [ "${line: -1}" != ' ' ] || words+=('')
    # It forgets the quote that the word begins with; the tab key, which inserts a single one, closes it.
    key=$'\e*'
    [[ $line != *\"* ]] || key=$'\t'
    printf 'before=%d\n%s\n' $((${#words[@]} - 1)) "$line$key"
  done <"$asked_lines" >"$work/keys"
  echo exit >>"$work/keys"
  timeout 20 script -qec "bash --noprofile --rcfile '$here/bashrc' -i" /dev/null <"$work/keys" >/dev/null
}
in_zsh() { ZDOTDIR=$here timeout 20 script -qec 'zsh -d -i' /dev/null </dev/null >/dev/null; }
in_fish() {
  timeout 20 fish --no-config -c 'source $share/fish/vendor_completions.d/aveffect.fish
    while read -l line; echo "== $line"; complete -C $line | string replace -r "\t.*" ""; end <$asked_lines; true' >"$found"
}

# A line for each case, as in cases.txt.
answers() {
  sed -E '/^== /!{ s/^.*[:=](.)/\1/; s/\\//g; s,/$,, }' "$1" | LC_ALL=C awk '
    function tell(   i, text) {
      if (asked == "") return
      count = asorted(); text = asked "|"
      for (i = 1; i <= count; ++i) text = text (i > 1 ? " " : "") kept[i]
      print text
    }
    function asorted(   i, j, n, word) {
      n = 0; delete kept
      for (word in seen) {
        for (i = ++n; i > 1 && kept[i - 1] > word; --i) kept[i] = kept[i - 1]
        kept[i] = word
      }
      return n
    }
    /^== / { tell(); asked = substr($0, 4); delete seen; next }
    $0 != "" { seen[$0] = 1 }
    END { tell() }'
}

failed=0
for shell in bash zsh fish; do
  found=$work/$shell
  : >"$found"
  "in_$shell" || { echo "$shell came to no end"; failed=1; }
  diff "$here/cases.txt" <(answers "$found") || { echo "$shell completes otherwise (>)"; failed=1; }
done
exit $failed

#!/usr/bin/env bash
# Holds every #include "..." against the rooms below: includes run downwards only. Prints those that don't.
set -euo pipefail
cd "$(dirname "$0")/.."

# Each room, and the rooms that it may include besides itself. A file belongs to the longest name that fits.
rooms='
include:
BaseTools:          include
kernels:            include
avbase:             include BaseTools kernels
AVEffect:           include BaseTools kernels avbase
mediabridge:        include kernels
companions/basetools: include
companions/basemedia: include mediabridge
host/support:       include mediabridge
host/settings:      include host/support
host/picture:       include kernels mediabridge host/support
host/media:         include mediabridge host/support host/picture
host/effects:       include mediabridge host/support host/settings host/picture host/media
host/sound:         include mediabridge host/support host/settings host/picture host/media host/effects
host/output:        include mediabridge host/support host/settings host/picture host/media host/effects host/sound
host/jobs:          include mediabridge host/support host/settings host/picture host/media host/effects host/sound host/output
timeline/film:      host/settings
timeline/otio:      include host/support host/settings host/media timeline/film
timeline/playout:   include kernels mediabridge host/support host/settings host/picture host/media host/effects host/sound host/output timeline/film
timeline/jobs:      include mediabridge host/support host/settings host/picture host/media host/effects host/sound host/output host/jobs timeline/film timeline/otio timeline/playout
cli/confinement:
farm:               include mediabridge host/support host/settings host/media host/effects host/output host/jobs timeline/film timeline/jobs
studio:             mediabridge host/support host/settings host/picture host/media host/effects host/jobs timeline/film timeline/otio timeline/jobs include
cli:                include studio cli/confinement mediabridge host/support host/settings host/media host/effects host/jobs timeline/film timeline/otio timeline/jobs farm
manual:             include host/support host/settings host/effects host/jobs cli
adapters/support:   include mediabridge host/settings host/media host/effects
adapters/frei0r:    include host/settings host/effects adapters/support
adapters/mlt:       include mediabridge host/support host/settings host/media host/effects adapters/support
adapters/gstreamer: include host/settings host/effects adapters/support
adapters/sound:     include kernels
adapters/ladspa:    include adapters/sound
adapters/lv2:       include adapters/sound
python/core:        include mediabridge host/support host/settings host/media host/effects host/sound host/jobs adapters/support cli timeline/jobs
examples:           include host/jobs
tests:              *
fuzz:               *
bench:              *
'

# Public headers are included by the name that they are installed under.
git ls-files '*.h' '*.cpp' '*.inl' '*.in' | xargs grep -Hn '^ *# *include "' |
  sed -E 's/^([^:]+):([0-9]+): *# *include "([^"]+)".*/\1 \2 \3/; s# aveffect/# include/aveffect/#' |
  awk -v rooms="$rooms" '
    function room_of(path,   end, name) {
      for (end = length(path); end > 0; --end)
        if (substr(path, end, 1) == "/" && (name = substr(path, 1, end - 1)) in may) return name
      return ""
    }
    BEGIN {
      count = split(rooms, lines, "\n")
      for (i = 1; i <= count; ++i)
        if (split(lines[i], parts, ":") == 2) may[parts[1]] = " " parts[2] " "
    }
    {
      from = room_of($1)
      to = room_of($3)
      if (from == "") { print $1 ": lies in no room of scripts/arrows.sh"; bad = 1 }
      else if (to == "") { print $1 ":" $2 ": \"" $3 "\" names no room; include from the top of the tree"; bad = 1 }
      else if (to != from && index(may[from], " * ") == 0 && index(may[from], " " to " ") == 0) {
        print $1 ":" $2 ": " from " must not include " to " (\"" $3 "\")"; bad = 1
      }
    }
    END { exit bad }'

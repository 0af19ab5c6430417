#!/bin/sh
# What man(1) has to say of a manual page, which ought to be nothing. The width is that of Debian's own check.
set -eu
said=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$1" 2>&1 >/dev/null)
[ -z "$said" ] || { echo "$said"; exit 1; }

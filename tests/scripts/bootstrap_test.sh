#!/usr/bin/env bash
# Tests scripts/bootstrap against stand-ins for dpkg-query, dpkg, apt-cache, apt-get, sudo and
# id on PATH. The stand-ins answer as Debian's do, record their calls, and keep their state in
# files of a scratch folder:
#   missing  packages dpkg-query does not know (all others are installed)
#   both     packages installed for amd64 and arm64, which dpkg-query lists once for each
#   foreign  packages installed for arm64 only
#   offered  packages the apt sources have a candidate for
#   arches   the foreign dpkg architectures
#   update-fails  present: apt-get update fails
# apt-cache policy writes a long version table after the candidate line, as it does for a package
# with many versions, so that a reader that stops at the candidate line leaves it writing.
# Usage: bootstrap_test.sh [PATH-OF-BOOTSTRAP]
set -uo pipefail
bootstrap=${1:-$(dirname "$0")/../../scripts/bootstrap}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0

stand_ins() {
  local bin=$1/bin
  mkdir -p "$bin"
  cat >"$bin/dpkg-query" <<'SH'
#!/usr/bin/env bash
echo "dpkg-query $*" >>"$STATE/calls"
p=${!#}
if grep -qxF -- "$p" "$STATE/missing"; then
  echo "dpkg-query: no packages found matching $p" >&2
  exit 1
fi
format='${Status}'
for a; do
  case "$a" in -f=* | --showformat=*) format=${a#*=} ;; esac
done
names=$p
grep -qxF -- "$p" "$STATE/both" && names="$p:amd64 $p:arm64"
grep -qxF -- "$p" "$STATE/foreign" && names="$p:arm64"
for n in $names; do
  line=${format//'${binary:Package}'/$n}
  printf "${line//'${Status}'/install ok installed}"
done
SH
  cat >"$bin/apt-cache" <<'SH'
#!/usr/bin/env bash
p=$2
grep -qxF -- "$p" "$STATE/offered" || exit 0
printf '%s:\n  Installed: (none)\n  Candidate: 1.0-1\n  Version table:\n' "$p"
for ((i = 0; i < 4000; i++)); do
  printf '     0.%d-1 500\n        500 http://deb.debian.org/debian bookworm/main amd64 Packages\n' "$i"
done
SH
  cat >"$bin/apt-get" <<'SH'
#!/usr/bin/env bash
echo "apt-get $*" >>"$STATE/calls"
for word; do
  case "$word" in
    update)
      if [ -e "$STATE/update-fails" ]; then
        echo "E: The repository 'http://deb.debian.org/debian bookworm Release' does not have a Release file." >&2
        exit 100
      fi
      exit 0 ;;
    install) exit 0 ;;
  esac
done
exit 100
SH
  cat >"$bin/dpkg" <<'SH'
#!/usr/bin/env bash
case "$1" in
  --print-architecture) echo amd64 ;;
  --print-foreign-architectures) cat "$STATE/arches" ;;
  --add-architecture) echo "dpkg $*" >>"$STATE/calls"; echo "$2" >>"$STATE/arches" ;;
  --remove-architecture) echo "dpkg $*" >>"$STATE/calls"; : >"$STATE/arches" ;;
  *) exit 2 ;;
esac
SH
  printf '#!/bin/sh\necho "sudo $*" >>"$STATE/calls"\nexec "$@"\n' >"$bin/sudo"
  printf '#!/bin/sh\necho 0\n' >"$bin/id"
  chmod +x "$bin"/*
}

# check NAME STATUS STDERR-PATTERN EXPECTED-CALLS -- ARGS...: runs the bootstrap with ARGS on
# the state set up before and compares its status, its error output (a grep -E pattern, or
# empty for none) and the calls it made to apt-get and dpkg (not the queries).
check() {
  local name=$1 status=$2 pattern=$3 expected=$4
  shift 5
  STATE=$state PATH=$state/bin:$PATH "$bootstrap" "$@" >"$state/out" 2>"$state/err"
  local got=$?
  local calls
  calls=$(grep -v '^dpkg-query' "$state/calls" 2>/dev/null)
  local ok=1
  [ "$got" -eq "$status" ] || { echo "$name: exit $got, expected $status"; ok=; }
  if [ -n "$pattern" ]; then
    grep -qE -- "$pattern" "$state/err" || { echo "$name: stderr lacks /$pattern/"; ok=; }
  elif [ -s "$state/err" ]; then
    echo "$name: unexpected stderr"; ok=
  fi
  [ "$calls" = "$expected" ] || { printf '%s: calls\n%s\nexpected\n%s\n' "$name" "$calls" "$expected"; ok=; }
  if [ -z "$ok" ]; then
    sed 's/^/  err: /' "$state/err"
    failures=$((failures + 1))
  else
    echo "ok: $name"
  fi
}

# fresh MISSING OFFERED [ARCHES [BOTH [FOREIGN]]]: a new state folder.
fresh() {
  state=$(mktemp -d -p "$scratch")
  stand_ins "$state"
  printf '%s\n' $1 >"$state/missing"
  printf '%s\n' $2 >"$state/offered"
  printf '%s' "${3:-}" >"$state/arches"
  printf '%s\n' ${4:-} >"$state/both"
  printf '%s\n' ${5:-} >"$state/foreign"
}

apt='apt-get -o DPkg::Lock::Timeout=600'
arm64='libc6:arm64 libstdc++6:arm64 android-liblog-dev:arm64 libgtest-dev:arm64 libgmock-dev:arm64 libsndfile1-dev:arm64'

fresh "" ""
check "nothing missing" 0 "" "" --

fresh "" "" "arm64" "libgtest-dev libc6"
check "installed for two architectures" 0 "" "" -- aarch64

fresh "" "libsndfile1-dev" "arm64" "" "libsndfile1-dev"
check "installed for arm64 only" 0 "" "$apt update -qq
$apt install -y -qq --no-install-recommends libsndfile1-dev" --

fresh "libcli11-dev mini-soong" "libcli11-dev mini-soong"
check "missing and available" 0 "" "$apt update -qq
$apt install -y -qq --no-install-recommends libcli11-dev mini-soong" --

fresh "no-such-package" "cmake"
check "not to be had" 1 '^bootstrap: not to be had from the apt sources: no-such-package$' \
  "$apt update -qq" -- no-such-package

fresh "$arm64" ""
check "arm64 not to be had" 1 \
  '^bootstrap: the arm64 architecture cannot be had: the apt sources offer no arm64 packages \(needed: libc6:arm64 ' \
  "dpkg --add-architecture arm64
$apt update -qq
dpkg --remove-architecture arm64" -- aarch64

fresh "$arm64" "$arm64"
check "arm64 added and installed" 0 "" "dpkg --add-architecture arm64
$apt update -qq
$apt install -y -qq --no-install-recommends $arm64" -- aarch64

fresh "$arm64" "$arm64" "arm64"
check "arm64 already there" 0 "" "$apt update -qq
$apt install -y -qq --no-install-recommends $arm64" -- aarch64

fresh "libcli11-dev libc6:arm64" "libcli11-dev libc6:arm64"
touch "$state/update-fails"
check "apt-get update fails" 1 '^bootstrap: apt-get update failed$' "dpkg --add-architecture arm64
$apt update -qq
dpkg --remove-architecture arm64" -- libc6:arm64 libcli11-dev

[ "$failures" -eq 0 ] || { echo "$failures case(s) failed"; exit 1; }

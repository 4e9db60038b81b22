#!/bin/bash
# tools/setup on machines made of stand-ins: what dpkg-query answers, who asks, what sudo and apt-get do.
#   setup_test.sh SETUP FOLDER
set -euo pipefail

setup=$1
machine=$2
rm -rf "$machine"
mkdir -p "$machine/bin"

fail() {
  echo "setup_test: $*" >&2
  exit 1
}

stand_in() {
  printf '#!/bin/bash\n%s\n' "$2" >"$machine/bin/$1"
  chmod +x "$machine/bin/$1"
}

# Answers as dpkg-query does, taking for missing what the file says.
stand_in dpkg-query 'shift 2
for package; do
  grep -qx -- "$package" "'"$machine"'/missing" || echo "installed $package"
done'
stand_in id 'echo 1000'
stand_in apt-get 'echo "apt-get $*" >>"'"$machine"'/calls"'

# run_setup ARGUMENT...: status, output and the calls of apt-get end up in variables.
run_setup() {
  : >"$machine/calls"
  status=0
  output=$(PATH=$machine/bin:$PATH "$setup" "$@" 2>&1 </dev/null) || status=$?
  calls=$(<"$machine/calls")
}

stand_in sudo 'exit 1'
: >"$machine/missing"
run_setup
[[ $status == 0 && -z $output && -z $calls ]] || fail "with all in place: $status, $output, $calls"

printf '%s\n' g++ libsndfile1-dev valgrind >"$machine/missing"
run_setup
[[ $status != 0 && -z $calls ]] || fail "without rights: $status, $calls"
[[ $(wc -l <<<"$output") == 1 ]] || fail "not one line: $output"
[[ $output == *'install --no-install-recommends g++ libsndfile1-dev' ]] || fail "other packages: $output"
run_setup matrix
[[ $output == *' g++ libsndfile1-dev valgrind' ]] || fail "other packages for the matrix: $output"

stand_in sudo '[[ $1 != -n ]] || shift
exec "$@"'
run_setup
[[ $status == 0 ]] || fail "through sudo: $status, $output"
[[ $calls == *' install --no-install-recommends g++ libsndfile1-dev' ]] || fail "apt-get was asked: $calls"

# A list that cannot be refreshed is no reason to stop; a package that cannot be installed is.
stand_in apt-get '[[ " $* " != *" update "* ]]'
run_setup
[[ $status == 0 ]] || fail "without fresh lists: $status, $output"
stand_in apt-get '[[ " $* " != *" install "* ]]'
run_setup
[[ $status != 0 && $output == *'could not install g++ libsndfile1-dev' ]] || fail "apt-get failed: $output"

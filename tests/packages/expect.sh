# For the tests of packages: each failure is a line, and the test goes on.
failures=0
wrong() { printf 'FAILED: %s\n' "$*"; failures=$((failures + 1)); }
# same WHAT HAVE WANT
same() { [ "$2" = "$3" ] || wrong "$1: \"$2\", not \"$3\""; }
# works WHAT COMMAND...: says what a failing command said
works() {
    local what=$1 said
    shift
    said=$("$@" 2>&1) || wrong "$what: exit status $?: $said"
}
finish() { [ "$failures" -eq 0 ] || { printf '%s failures\n' "$failures"; exit 1; }; }

# Turns the comments of a header into those that doxygen reads. The block at the top describes the
# file. A block above a declaration describes that one and all that follow it, up to an empty line or
# the next block. A comment behind a declaration describes it. Lines that stand in by three blanks, as in
# "//   returns  null", become a list.

function is_comment(line) {
  return line ~ /^ *\/\//
}

function print_run(    several, k) {
  several = declarations > 1 && is_comment(run[1])
  if (several) print "///@{"
  for (k = 1; k <= lines; ++k) {
    if (run[k] ~ /^ *\/\/   [^ ]/) sub(/\/\/   /, "&- ", run[k])
    if (!sub(/^ *\/\//, "&/", run[k])) sub(/ \/\/ /, " ///< ", run[k])
    print run[k]
  }
  if (several) print "///@}"
  lines = declarations = 0
}

NR == 1 { print "/// \\file" }
!NF { print_run(); print; next }
is_comment($0) && lines && !is_comment(run[lines]) { print_run() }
{ run[++lines] = $0 }
is_comment($0) { next }
/(;|\{.*\})( +\/\/ .*)?$/ { ++declarations }
/^extern [^(]*,/ { ++declarations }
/^#/ || gsub(/\{/, "{") != gsub(/\}/, "}") { declarations = 0; print_run() }
END { print_run() }

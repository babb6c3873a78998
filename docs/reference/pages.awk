# Turns a page's links into ones that Doxygen follows: each heading gets the anchor that it has in a repository's view,
# with the page's name before it, and links lead there. Links to sources become plain text.
#
# usage: awk -f pages.awk PAGE

function name_of(path) { sub(/.*\//, "", path); sub(/\.md$/, "", path); return path == "README" ? "index" : path }

function anchor_of(heading) {
  heading = tolower(heading)
  gsub(/[^a-z0-9 _-]/, "", heading)
  gsub(/ /, "-", heading)
  return heading
}

function reference(text, target, parts) {
  if (target ~ /^[a-z]+:/) return "[" text "](" target ")"
  if (target ~ /^\.\.\//) return text
  if (split(target, parts, "#") == 2) return "@ref " (parts[1] == "" ? page : name_of(parts[1])) "_" parts[2] " \"" text "\""
  if (target ~ /^[^\/]*\.md$/) return "@ref " name_of(target) " \"" text "\""
  return text
}

function linked(line, done, text, target) {
  while (match(line, /\[[^][]*\]\([^()]*\)/)) {
    text = substr(line, RSTART + 1, RLENGTH - 2)
    target = text
    sub(/\]\(.*/, "", text)
    sub(/.*\]\(/, "", target)
    if (substr(line, RSTART - 1, 1) == "!") done = done substr(line, 1, RSTART + RLENGTH - 1)
    else done = done substr(line, 1, RSTART - 1) reference(text, target)
    line = substr(line, RSTART + RLENGTH)
  }
  return done line
}

FNR == 1 { page = name_of(FILENAME) }
/^ *```/ { in_code = !in_code }
in_code || /^    / { print; next }
/^# / && !titled++ { print page == "index" ? $0 : $0 " {#" page "}"; next }
/^##+ / {
  gsub(/`/, "")
  heading = $0
  sub(/^#+ /, "", heading)
  print $0 " {#" page "_" anchor_of(heading) "}"
  next
}
# An IPv6 address is no name in the global scope.
{ gsub(/::ffff/, "::%ffff"); print linked($0) }

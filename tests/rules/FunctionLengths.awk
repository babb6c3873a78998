# Prints "FILE:LINE LENGTH" for each function, from the line of its name to that of its closing brace. Reads sources as
# the formatter leaves them: a space before the brace of a body, none before that of an initializer.

# The line without comments and without what stands in quotes.
function code_of(line) {
  if (in_comment) {
    if (!sub(/^.*\*\//, "", line)) return ""
    in_comment = 0
  }
  if (in_raw_text) {
    if (!sub(/^.*\)"/, "", line)) return ""
    in_raw_text = 0
  }
  gsub(/R"\([^)]*\)"/, "0", line)
  if (sub(/R"\(.*$/, "0", line)) in_raw_text = 1
  gsub(/"([^"\\]|\\.)*"/, "0", line)
  gsub(/\047([^\047\\]|\\.[0-9a-fA-F]*)\047/, "0", line)
  sub(/\/\/.*$/, "", line)
  gsub(/\/\*([^*]|\*[^\/])*\*\//, "", line)
  if (sub(/\/\*.*$/, "", line)) in_comment = 1
  return line
}

function add_to_head(text) {
  gsub(/^[ \t]+|[ \t]+$/, "", text)
  if (text == "") return
  if (head == "") head_line = FNR
  head = head " " text
}

function begin_head() { head = ""; head_line = FNR }

# A body follows a list of parameters, or what may stand after one; types, namespaces and initializers have none.
function begins_function(before) {
  return index(head, "(") > 0 && before ~ /(^|[ \t])$/ && head !~ /[=,(]$/ &&
    head !~ /^ *((inline|export) )*namespace / && head !~ /^ *(template ?<.*> *)?(class|struct|union|enum) [^(]*(\([^(]*\))?[^()]*$/
}

FNR == 1 { depth = function_depth = initializer_depth = in_comment = in_raw_text = in_directive = 0; begin_head() }

in_directive || /^[ \t]*#/ { in_directive = /\\$/; next }

{
  rest = code_of($0)
  while (match(rest, /[{};]/)) {
    before = substr(rest, 1, RSTART - 1)
    mark = substr(rest, RSTART, 1)
    rest = substr(rest, RSTART + 1)
    if (function_depth == 0) add_to_head(before)
    if (mark == "{") {
      depth++
      if (function_depth > 0 || initializer_depth > 0) continue
      if (begins_function(before)) {
        function_depth = depth
        function_line = head_line
      } else if (head ~ /[=,(]$/ || before !~ /(^|[ \t])$/) {
        initializer_depth = depth
      } else {
        begin_head()
      }
    } else if (mark == "}") {
      if (depth == function_depth) {
        print FILENAME ":" function_line, FNR - function_line + 1
        function_depth = 0
        begin_head()
      } else if (depth == initializer_depth) {
        initializer_depth = 0
        head = head "{}"
      } else if (function_depth == 0 && initializer_depth == 0) {
        begin_head()
      }
      depth--
    } else if (function_depth == 0 && initializer_depth == 0) {
      begin_head()
    }
  }
  if (function_depth == 0) add_to_head(rest)
}

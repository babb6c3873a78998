# Turns the comments of the headers into Doxygen's, which leaves them plain to read in the headers. What stands before a
# declaration describes it, and those that follow up to a blank line; what stands behind an enumerator or a member
# describes that. Tables of what is thrown become lists, indented lines become code. Comments in function bodies and
# tables stay what they are. Specializations are left out: what they specialize is described elsewhere.
#
# usage: awk -f headers.awk HEADER

function escaped(text) {
  gsub(/[\\@<>&#%]/, "\\\\&", text)
  return text
}

function emit(text) { print text }
function say(text) { if (shown++ == 0) said = "/// " text; else said = said "\n/// " text }

# --- What is thrown

function end_entry() {
  if (term != "" && reason != "") say("- " escaped(term) ": " escaped(reason))
  else if (term reason != "") say("- " escaped(term reason))
  term = reason = ""
}

function is_symbol(text) { return text ~ /^(also )?(SOCKET_ERR_|std::|VelBase::|VelNet::|Exception( |$))/ }

function begin_entry(text, gap) {
  if (term !~ /,$/) end_entry()
  gap = match(text, /   */) ? RSTART : is_symbol(text) ? index(text, " ") : 0
  if (gap == 0 || substr(text, gap - 1, 1) == ",") {
    if (is_symbol(text)) term = term (term == "" ? "" : " ") text
    else reason = text
    return
  }
  term = term (term == "" ? "" : " ") substr(text, 1, gap - 1)
  reason = substr(text, gap)
  sub(/^ +/, "", reason)
}

# table(FROM, BASE): the lines from there on as long as they are indented so far; returns the first that is not.
function table(from, base, i, text) {
  say("")
  for (i = from; i <= count && (i == from || indent_of(line[i]) >= base && line[i] ~ /[^ ]/); i++) {
    text = substr(line[i], base + 1)
    if (text ~ /^ /) { sub(/^ +/, "", text); reason = reason (reason == "" ? "" : " ") text }
    else begin_entry(text)
  }
  end_entry()
  say("")
  return i
}

# --- A block of comment

function indent_of(text) { match(text, /^ */); return RLENGTH }

function code(from, i) {
  say("@code{.cpp}")
  for (i = from; i <= count && indent_of(line[i]) >= 2; i++) say(line[i])
  say("@endcode")
  return i
}

function convert(i, base, in_list) {
  shown = 0
  for (i = 1; i <= count;) {
    if (line[i] ~ /^Throws?: /) {
      base = index(line[i], ":") + 1
      say("")
      say("@par Throws")
      line[i] = sprintf("%" base "s", "") substr(line[i], base + 1)
      i = table(i, base)
      continue
    }
    base = indent_of(line[i])
    if (base == 0) in_list = line[i] ~ /^- /
    if (base >= 2 && is_symbol(substr(line[i], base + 1))) { i = table(i, base); continue }
    if (base >= 2 && !in_list) { i = code(i); continue }
    if (line[i] ~ /^Required: /) { say(""); say("@remark **Required:** " escaped(substr(line[i], 11))) }
    else say(escaped(line[i]))
    i++
  }
  count = 0
  return said
}

# --- Declarations

function without_comment(text) { sub(/[ \t]*\/\/.*$/, "", text); gsub(/"([^"\\]|\\.)*"/, "0", text); return text }

# What an opening brace begins, by the declaration so far.
function kind_of(head) {
  if (head ~ /(^|[^a-z_])namespace([^a-z_]|$)/) return "namespace"
  if (head ~ /(^|[^a-z_])enum([^a-z_]|$)/) return "enum"
  if (head !~ /\(/ && head ~ /(^|[^a-z_<])(class|struct|union) /) return "class"
  return "body"
}

function describes() { return depth == 0 || kind[depth] != "body" }

# Follows the braces; sets ended when a declaration has come to its end.
function follow(text, i, character, before) {
  if (text ~ /^[ \t]*#/) return
  before = depth
  ended = 0
  text = text " "
  for (i = 1; i <= length(text); i++) {
    character = substr(text, i, 1)
    if (character == "{") { kind[++depth] = kind_of(head); if (kind[depth] != "body") head = "" }
    else if (character == "}") { ended = kind[depth] == "body"; if (depth > 0) depth--; ended = ended && describes(); if (ended) head = "" }
    else if (character == ";" && describes()) { head = ""; ended = 1 }
    else if (character == ":" && head ~ /^ *(public|protected|private)$/) head = ""
    else if (describes()) { head = head character; if (character != " ") ended = 0 }
  }
  if (head !~ /[^ ]/) head = ""
  opened = depth > before && describes()
}

function finish_block(next_line, text) {
  if (count == 0) return
  text = convert()
  if (!file_described++) emit("/// @file\n" text)
  else if (next_line ~ /^[ \t]*$/) emit("/// @file\n" text "\n")
  else { description = text; emit(text) }
}

function is_declaration(text) {
  return text !~ /^[ \t]*(#|}|public:|protected:|private:|using Socket::|friend |static_assert)/ && text ~ /[^ \t]/
}

describes() && /^[ \t]*\/\/( |$)/ {
  if ($0 !~ /clang-format/) { text = $0; sub(/^[ \t]*\/\/ ?/, "", text); line[++count] = text }
  next
}
/^ *extern template / { next }
depth == 0 && /^template <>/ { print "/// @cond"; is_hidden = 1 }
{
  began = count > 0
  finish_block($0)
  if ($0 ~ /^[ \t]*$/ || opened) { description = ""; opened = 0 }
  # One of several declarations with one description.
  if (!began && ended && head == "" && description != "" && is_declaration($0)) emit(description)
  shown_line = $0
  if (describes() && without_comment($0) ~ /[,;0-9a-zA-Z_]$/ && head !~ /\(/) sub(/  +\/\/ /, "  ///< ", shown_line)
  emit(shown_line)
  follow(without_comment($0))
  if (is_hidden && ended && depth == 0) { print "/// @endcond"; is_hidden = 0 }
}
END { finish_block("") }

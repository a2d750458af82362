# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# awk -f edits.awk FILE...: lists the edits that tests/mutation/sample can make in C++ sources, one a
# line, fields separated by tabs:
#   file  line  lines  column  length  rule  old  new
# An edit replaces `length` characters from `column` of `line` by `new`, and blanks the `lines` - 1
# lines that follow. The sources are expected in the project's format. Headers get the rules for
# numbers and texts only. An edit that does not compile is dropped by the caller.

function emit(column, length_, rule, new_, count) {
  if (index(raw[at], "\t")) return
  printf "%s\t%d\t%d\t%d\t%d\t%s\t%s\t%s\n", name, at, count ? count : 1, column, length_, rule,
    substr(raw[at], column, length_), new_
}
# Every match of `pattern` in the code of the line; `drop` characters at either end are context.
function each(pattern, drop, rule, new_,   from, rest) {
  from = 1
  while (match(rest = substr(code[at], from), pattern)) {
    emit(from + RSTART - 1 + drop, RLENGTH - 2 * drop, rule, new_)
    from += RSTART + RLENGTH - 1 - drop
  }
}
# The column after the bracket that closes the one at `column`; 0 when it is on another line.
function closing(text, column,   depth, c) {
  for (; column <= length(text); column++) {
    c = substr(text, column, 1)
    if (c == "(") depth++
    if (c == ")" && --depth == 0) return column + 1
  }
  return 0
}
function trim(text) { sub(/^ +/, "", text); sub(/ +$/, "", text); return text }
function repeat(c, n,   text) { while (n-- > 0) text = text c; return text }

# Splits a line into code and literals: code[n] has the same length as the line, with the contents of
# literals and comments replaced. Collects the literals of the line in texts[].
function mask(line,   i, c, out, quote, start) {
  text_count = 0
  for (i = 1; i <= length(line); i++) {
    c = substr(line, i, 1)
    if (in_comment) {
      if (substr(line, i, 2) == "*/") { in_comment = 0; out = out " "; i++ }
      out = out " "
    } else if (quote != "") {
      if (c == "\\") { out = out "QQ"; i++; continue }
      if (c == quote) {
        text_start[++text_count] = start; text_end[text_count] = i; quote = ""; out = out c
      } else out = out "Q"
    } else if (substr(line, i, 2) == "//") {
      return out repeat(" ", length(line) - i + 1)
    } else if (substr(line, i, 2) == "/*") {
      in_comment = 1; out = out "  "; i++
    } else {
      # An apostrophe inside a number is a separator.
      if (c == "\"" || (c == "'" && substr(out, length(out)) !~ /[0-9]/)) { quote = c; start = i }
      out = out c
    }
  }
  return out
}

function relations() {
  each(" == ", 1, "relation", "!=")
  each(" != ", 1, "relation", "==")
  each(" < ", 1, "relation", "<=")
  each(" <= ", 1, "relation", "<")
  each(" > ", 1, "relation", ">=")
  each(" >= ", 1, "relation", ">")
}
function logic() {
  # At the end of a line no space follows the operator.
  code[at] = code[at] " "
  each(" && ", 1, "logic", "||")
  each(" [|][|] ", 1, "logic", "&&")
}
# A condition that another rule already negates.
function is_negated_elsewhere(text) {
  return text !~ /&&|[|][|]/ && (text ~ /^!/ || text ~ / (==|!=) /)
}
function conditions(   from, end) {
  if (match(code[at], /(if|while) \(/) && (RSTART == 1 || substr(code[at], RSTART - 1, 1) == " ")) {
    from = RSTART + RLENGTH - 1
    end = closing(code[at], from)
    if (end && !index(substr(code[at], from, end - from), ";") &&
        !is_negated_elsewhere(substr(code[at], from + 1, end - from - 2)))
      emit(from, end - from, "condition", "(!" substr(raw[at], from, end - from) ")")
  }
  from = 1
  while (match(substr(code[at], from), /[ (]![A-Za-z_(:]/)) {
    emit(from + RSTART, 1, "condition", "")
    from += RSTART + 1
  }
}
function numbers(   from, start, digits, before, after) {
  from = 1
  while (match(substr(code[at], from), /[0-9]+/)) {
    start = from + RSTART - 1
    digits = substr(code[at], start, RLENGTH)
    from = start + RLENGTH
    before = substr(code[at], start - 1, 1)
    after = substr(code[at], from, 1)
    if (before ~ /[A-Za-z0-9_.'Q]/ || after ~ /[A-Za-z0-9_.']/) continue
    if (code[at] ~ /\) *(const)? = 0;/) continue
    emit(start, length(digits), "number", sprintf("%d", digits + 1))
  }
  word("true", "false")
  word("false", "true")
}
function word(old, new_,   from, start) {
  from = 1
  while ((start = index(substr(code[at], from), old)) > 0) {
    start += from - 1
    from = start + length(old)
    if (substr(code[at], start - 1, 1) ~ /[A-Za-z0-9_]/ || substr(code[at], from, 1) ~ /[A-Za-z0-9_]/)
      continue
    emit(start, length(old), "number", new_)
  }
}
function literals(   i, quote) {
  for (i = 1; i <= text_count; i++) {
    quote = substr(raw[at], text_start[i], 1)
    if (substr(raw[at], text_start[i] - 1, 1) == "R") continue
    if (quote == "\"") emit(text_end[i], 1, "text", "~\"")
    else if (text_end[i] - text_start[i] == 2) emit(text_start[i], 3, "text", "'~'")
  }
}
function priorities() {
  each("ORV_LOG_INFO", 0, "priority", "ORV_LOG_ERROR")
  each("ORV_LOG_DEBUG", 0, "priority", "ORV_LOG_ERROR")
  each("ORV_LOG_ERROR", 0, "priority", "ORV_LOG_DEBUG")
}
function is_declaration(text) {
  if (text ~ /^delete /) return 0
  if (text ~ /^(const|static|auto|constexpr|inline|using|if|for|while|switch|case|default|else|do|try|catch|typedef|struct|class|enum|namespace|template|extern|public|private|protected|friend|explicit|virtual|unsigned|return|throw)[ *&(:{]/)
    return 1
  return text ~ /^[A-Za-z_][A-Za-z0-9_:]*(<.*>)?[&*]* +[&*]*[A-Za-z_][A-Za-z0-9_:]*( =|\(|;|\{|\[|\)|,)/
}
# The line on which the statement that begins at `column` ends; 0 when it contains a block.
function last_line(column,   n, text, depth, i, c) {
  for (n = at; n <= total; n++) {
    text = n == at ? substr(code[n], column) : code[n]
    if (text ~ /^ *#/) return 0
    for (i = 1; i <= length(text); i++) {
      c = substr(text, i, 1)
      if (c == "(" || c == "{") depth++
      if (c == ")" || c == "}") depth--
      if (depth < 0) return 0
    }
    text = trim(text)
    if (text ~ /;$/ && depth == 0) return n
    if (text ~ /\{$/ || text ~ /;$/) return 0
  }
  return 0
}
function code_after(n) { do n++; while (n <= total && trim(code[n]) == ""); return n }
function statements(   text, column, end, next_) {
  text = trim(code[at])
  match(code[at], /^ */)
  column = RLENGTH + 1
  # The body of an if or for on the same line.
  if (text ~ /^(else )?(if|for|while) \(/) {
    end = closing(code[at], index(code[at], "("))
    if (!end || substr(code[at], end, 1) != " " || trim(code[at]) !~ /;$/) return
    emit(end + 1, length(trim(substr(code[at], end + 1))), "statement", ";")
    return
  }
  if (text ~ /^std::(lock_guard|scoped_lock|unique_lock)/ || text ~ /^const std::(lock_guard|scoped_lock)/) {
    end = last_line(column)
    if (end) emit(column, length(trim(substr(code[at], column))), "lock", ";", end - at + 1)
    return
  }
  if (column < 3) return
  if (text ~ /^(break|continue);$/) { emit(column, length(text), "statement", ";"); return }
  if (text ~ /^return[ ;].*;$/ || text == "return;") {
    next_ = code_after(at)
    if (column > 4 && code[next_] ~ /^  +\} *$/ && code[code_after(next_)] !~ /^\}/)
      emit(column, length(text), "statement", ";")
    return
  }
  if (text !~ /^[A-Za-z_:*+(-]/ || before_ !~ /[;{}):]$/ || before_ ~ /^#/) return
  if (before_ ~ /\)$/ && before_ !~ /^(\} )?(else )?(if|for|while) \(/) return
  if (is_declaration(text)) return
  if (text !~ /[(=]/ && text !~ /([+][+]|--)/) return
  end = last_line(column)
  if (end) emit(column, length(trim(substr(code[at], column))), "statement", ";", end - at + 1)
}

function finish(   in_directive) {
  in_comment = 0
  total = count
  # Statements look ahead, so all lines are masked first.
  for (at = 1; at <= total; at++) {
    code[at] = mask(raw[at])
    if (code[at] ~ /^ *#/ || in_directive) {
      in_directive = raw[at] ~ /\\$/
      code[at] = "#"
    }
    saved[at] = text_count
    for (i = 1; i <= text_count; i++) { starts[at, i] = text_start[i]; ends[at, i] = text_end[i] }
  }
  before_ = ""
  for (at = 1; at <= total; at++) {
    if (trim(code[at]) == "") continue
    if (code[at] != "#") {
      text_count = saved[at]
      for (i = 1; i <= text_count; i++) { text_start[i] = starts[at, i]; text_end[i] = ends[at, i] }
      if (code[at] !~ /^ *(static_assert|extern "C")/) {
        numbers()
        literals()
        if (name !~ /\.h$/) {
          relations()
          conditions()
          priorities()
          statements()
          logic()
        }
      }
    }
    before_ = trim(code[at])
  }
}
FNR == 1 { if (name != "") finish(); name = FILENAME; count = 0 }
{ raw[++count] = $0 }
END { if (name != "") finish() }

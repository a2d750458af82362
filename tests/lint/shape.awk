# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# awk -f shape.awk FILE...: prints "file:line: finding" for functions of more than 60 lines, more than
# three nested control statements, and test names of more than 60 characters. The sources are expected
# in the project's format: a function ends at the indentation at which it begins. A function of one
# long statement is a table, whatever its length.

function finding(line, text) { printf "%s:%d: %s\n", FILENAME, line, text }
function reset() { start = 0; depth = 0; name = "" }

FNR == 1 { reset() }
/^[ ]*(\/\/|$)/ { next }
{ match($0, /^ */); indent = RLENGTH }

# TEST(Suite, Name): the name may be on the next line.
/^TEST(_F|_P)?\(/ { name = ""; collecting = 1 }
collecting {
  name = name $0
  if (index(name, ")")) {
    collecting = 0
    sub(/\).*/, "", name); sub(/.*, */, "", name)
    if (length(name) > 60) finding(FNR, "a test name of " length(name) " characters: 60 at most: " name)
  }
}

# A function of a namespace or of a class. The "{" of a head of several lines is indented further.
!start && indent <= 2 { head = FNR; base = indent }
!start && /\{$/ && /[()]/ && !/=.*\{$/ && !/^ *(namespace|class|struct|enum|union|extern)/ &&
    (indent <= 2 || /\) (const |noexcept |override |try )*\{$/) {
  start = head; statements = 0; depth = 0
  next
}
!start { next }
indent == base && /^ *\}/ && !/^ *\} (catch|else)/ {
  if (FNR - start - 1 > 60 && statements > 3)
    finding(start, "a function of " FNR - start - 1 " lines: 60 at most")
  start = 0
  next
}
/;$/ { statements++ }
{
  while (depth && indent <= open_at[depth] && !/^ *\} (else|catch|while)/) depth--
}
/^ *(if|for|while|switch|do)( \(.*)? \{$/ {
  open_at[++depth] = indent
  if (depth > 3) finding(FNR, "control statements nested " depth " deep: 3 at most")
}

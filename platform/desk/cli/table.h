// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace desk {

/// Columns on a terminal that a UTF-8 text takes; continuation bytes count nothing.
size_t DisplayWidth(const std::string& text);

/// The text with control characters as \n, \t or \xNN, so that no value breaks a line or steers the
/// terminal.
std::string OneLine(const std::string& text);

/// Rows under a head, each column as wide as its widest cell and two blanks apart. The last column
/// is not padded: no line ends in blanks. An empty cell is shown as "-".
class Table {
 public:
  explicit Table(std::vector<std::string> head);
  /// Missing cells are empty, cells beyond the head are dropped.
  void Add(std::vector<std::string> row);
  /// The columns named are set flush right, for numbers.
  void AlignRight(size_t column);
  bool Empty() const { return m_rows.empty(); }
  void Print(std::ostream& out) const;

 private:
  std::vector<size_t> Widths() const;
  void PrintRow(std::ostream& out, const std::vector<std::string>& row,
                const std::vector<size_t>& widths) const;

  std::vector<std::string> m_head;
  std::vector<std::vector<std::string>> m_rows;
  std::vector<bool> m_right;
};

}  // namespace desk

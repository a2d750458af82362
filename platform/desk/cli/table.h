// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace desk::cli {

/// The number of terminal columns of a UTF-8 text. Continuation bytes are not counted.
size_t DisplayWidth(const std::string& text);

/// The text with control characters written as \n, \t or \xNN, so that a value can neither break a
/// line nor control the terminal.
std::string OneLine(const std::string& text);

/// Rows below a header. Each column is as wide as its widest cell, with two blanks in between; no
/// line ends in blanks. An empty cell is shown as "-".
class Table {
 public:
  explicit Table(std::vector<std::string> head);
  /// Missing cells are empty; cells beyond the header are dropped.
  void Add(std::vector<std::string> row);
  /// Aligns a column to the right, for numbers.
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

}  // namespace desk::cli

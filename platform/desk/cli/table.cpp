// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/table.h"

#include <algorithm>
#include <cstdio>
#include <ostream>

namespace desk::cli {
namespace {

std::string Escaped(unsigned char byte) {
  if (byte == '\n') {
    return "\\n";
  }
  if (byte == '\t') {
    return "\\t";
  }
  if (byte == '\r') {
    return "\\r";
  }
  char text[8];
  std::snprintf(text, sizeof text, "\\x%02x", byte);
  return text;
}

}  // namespace

size_t DisplayWidth(const std::string& text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

std::string OneLine(const std::string& text) {
  std::string line;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) {
      line += Escaped(byte);
    } else {
      line += c;
    }
  }
  return line;
}

Table::Table(std::vector<std::string> head) : m_head(std::move(head)), m_right(m_head.size()) {}

void Table::Add(std::vector<std::string> row) {
  row.resize(m_head.size());
  for (auto& cell : row) {
    cell = cell.empty() ? "-" : OneLine(cell);
  }
  m_rows.push_back(std::move(row));
}

void Table::AlignRight(size_t column) {
  m_right.at(column) = true;
}

std::vector<size_t> Table::Widths() const {
  std::vector<size_t> widths;
  for (size_t i = 0; i < m_head.size(); ++i) {
    size_t width = DisplayWidth(m_head[i]);
    for (const auto& row : m_rows) {
      width = std::max(width, DisplayWidth(row[i]));
    }
    widths.push_back(width);
  }
  return widths;
}

void Table::PrintRow(std::ostream& out, const std::vector<std::string>& row,
                     const std::vector<size_t>& widths) const {
  std::string line;
  for (size_t i = 0; i < row.size(); ++i) {
    const std::string blanks(widths[i] - DisplayWidth(row[i]), ' ');
    if (i > 0) {
      line += "  ";
    }
    line += m_right[i] ? blanks + row[i] : row[i] + blanks;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  out << line << '\n';
}

void Table::Print(std::ostream& out) const {
  const auto widths = Widths();
  PrintRow(out, m_head, widths);
  for (const auto& row : m_rows) {
    PrintRow(out, row, widths);
  }
}

}  // namespace desk::cli

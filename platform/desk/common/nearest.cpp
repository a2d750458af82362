// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/nearest.h"

#include <algorithm>

namespace desk {
namespace {

/// Inserting, deleting or changing a letter and swapping two neighbours count one each.
size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<std::vector<size_t>> rows(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i) {
    rows[i][0] = i;
  }
  for (size_t j = 0; j <= b.size(); ++j) {
    rows[0][j] = j;
  }
  for (size_t i = 1; i <= a.size(); ++i) {
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t changed = rows[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      rows[i][j] = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, changed});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
      }
    }
  }
  return rows[a.size()][b.size()];
}

}  // namespace

std::string Nearest(const std::string& word, const std::vector<std::string>& list) {
  std::string best;
  size_t least = std::max<size_t>(2, word.size() / 2) + 1;
  for (const auto& candidate : list) {
    const bool begins = !word.empty() && candidate.compare(0, word.size(), word) == 0;
    const size_t distance = begins ? 1 : EditDistance(word, candidate);
    if (distance >= least || distance >= std::max(word.size(), candidate.size())) {
      continue;
    }
    least = distance;
    best = candidate;
  }
  return best;
}

}  // namespace desk

// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/bundle_args.h"

#include <bundle.h>
#include <glib.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "desk/cli/failure.h"
#include "desk/common/base64.h"
#include "desk/common/numbers.h"

namespace desk::cli {
namespace {

[[noreturn]] void BadWord(const std::string& word, const std::string& why) {
  throw Failure(Exit::Usage, "\"" + word + "\" " + why +
                                 ": give key=text, key:int=5, key:bytes=0a0b or key:array=a,b");
}

std::pair<std::string, std::string> Cut(const std::string& word) {
  const auto equals = word.find('=');
  if (equals == std::string::npos) {
    BadWord(word, "has no \"=\"");
  }
  return {word.substr(0, equals), word.substr(equals + 1)};
}

std::string IntBytes(const std::string& word, const std::string& text) {
  const auto number = ReadNumber(text);
  if (!number || *number < INT32_MIN || *number > INT32_MAX) {
    BadWord(word, "is not a 32-bit number");
  }
  const auto bits = static_cast<uint32_t>(*number);
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) {
    bytes += static_cast<char>((bits >> shift) & 0xff);
  }
  return bytes;
}

Json::Value Strings(const std::string& text) {
  Json::Value list(Json::arrayValue);
  size_t start = 0;
  while (start <= text.size()) {
    const size_t comma = std::min(text.find(',', start), text.size());
    list.append(text.substr(start, comma - start));
    start = comma + 1;
  }
  return list;
}

int Digit(char c) {
  return g_ascii_xdigit_value(c);
}

}  // namespace

std::string BytesFromHex(const std::string& hex) {
  std::string bytes;
  for (size_t i = 0; i < hex.size(); i += 2) {
    const int high = Digit(hex[i]);
    const int low = i + 1 < hex.size() ? Digit(hex[i + 1]) : -1;
    if (high < 0 || low < 0) {
      throw Failure(Exit::Usage, "\"" + hex + "\" is not hex: give two digits per byte");
    }
    bytes += static_cast<char>(high * 16 + low);
  }
  return bytes;
}

std::string HexOf(const std::string& bytes) {
  constexpr char DIGITS[] = "0123456789abcdef";
  std::string hex;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    hex += DIGITS[byte >> 4];
    hex += DIGITS[byte & 15];
  }
  return hex;
}

Json::Value ParseBundleWord(const std::string& word) {
  const auto [left, text] = Cut(word);
  const auto colon = left.rfind(':');
  const std::string kind = colon == std::string::npos ? "" : left.substr(colon + 1);
  Json::Value entry;
  entry["key"] = left.substr(0, colon);
  if (kind == "int" || kind == "bytes") {
    entry["type"] = kind == "int" ? BUNDLE_TYPE_BYTE : BUNDLE_TYPE_BYTE_ARRAY;
    entry["bytes"] = ToBase64(kind == "int" ? IntBytes(word, text) : BytesFromHex(text));
  } else if (kind == "array") {
    entry["type"] = BUNDLE_TYPE_STR_ARRAY;
    entry["value"] = Strings(text);
  } else {
    // A colon that is not followed by a type is part of the key.
    entry["key"] = left;
    entry["type"] = BUNDLE_TYPE_STR;
    entry["value"] = text;
  }
  if (entry["key"].asString().empty()) {
    BadWord(word, "has no key");
  }
  return entry;
}

Json::Value ParseBundle(const std::vector<std::string>& words) {
  Json::Value bundle(Json::arrayValue);
  for (const auto& word : words) {
    bundle.append(ParseBundleWord(word));
  }
  return bundle;
}

std::string BundleEntryText(const Json::Value& entry) {
  std::string text = entry["key"].asString() + "=";
  if (entry.isMember("bytes")) {
    return text + HexOf(FromBase64(entry["bytes"].asString()));
  }
  if (!entry["value"].isArray()) {
    return text + entry["value"].asString();
  }
  for (Json::ArrayIndex i = 0; i < entry["value"].size(); ++i) {
    text += (i == 0 ? "" : ",") + entry["value"][i].asString();
  }
  return text;
}

Json::Value ParsePairs(const std::vector<std::string>& words) {
  Json::Value pairs(Json::objectValue);
  for (const auto& word : words) {
    const auto equals = word.find('=');
    if (equals == std::string::npos || equals == 0) {
      throw Failure(Exit::Usage, "\"" + word + "\" is not a key and a value: give key=value");
    }
    pairs[word.substr(0, equals)] = word.substr(equals + 1);
  }
  return pairs;
}

}  // namespace desk::cli

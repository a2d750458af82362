// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "common/JsonText.h"

#include <iterator>

// The library deprecates these two classes, but their successors write and accept another form, and
// stored and exchanged texts must not change.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace JsonText {

std::string Write(const Json::Value& rValue) {
  Json::FastWriter writer;
  return writer.write(rValue);
}

bool Parse(const std::string& rText, Json::Value& rRoot, std::string* pErrors) {
  Json::Reader reader;
  if (reader.parse(rText, rRoot, true)) {
    return true;
  }
  if (pErrors != nullptr) {
    *pErrors = reader.getFormattedErrorMessages();
  }
  return false;
}

bool Parse(std::istream& rStream, Json::Value& rRoot, std::string* pErrors) {
  // Not Json::Reader::parse(stream): it frees the text that getFormattedErrorMessages() reads.
  const std::string sText(std::istreambuf_iterator<char>(rStream), {});
  return Parse(sText, rRoot, pErrors);
}

}  // namespace JsonText

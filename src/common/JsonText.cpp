// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "common/JsonText.h"

#include <iterator>

// The library calls these two classes deprecated, but their successors print and accept another
// form, and what is stored and handed over must not change.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace JsonText {

std::string Write(const Json::Value& rValue) {
  Json::FastWriter writer;
  return writer.write(rValue);
}

bool Parse(const std::string& rText, Json::Value& rRoot, std::string* pErrors) {
  Json::Reader reader;
  if (reader.parse(rText, rRoot, true)) return true;
  if (pErrors != nullptr) *pErrors = reader.getFormattedErrorMessages();
  return false;
}

bool Parse(std::istream& rStream, Json::Value& rRoot, std::string* pErrors) {
  // The library's own reading of a stream gives its text back before it is asked for the
  // explanation, which looks into that text.
  const std::string sText(std::istreambuf_iterator<char>(rStream), {});
  return Parse(sText, rRoot, pErrors);
}

}  // namespace JsonText

// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>
#include <vector>

namespace desk {

enum class Severity {
  Error,   ///< the package or a part of it cannot work
  Warning  ///< it works, but probably not as intended
};

/// "error" or "warning".
const char* SeverityName(Severity severity);

/// What a check can find. Each has one row in the table of messages, which gives its id, severity,
/// text and remedy.
enum class Message {
  // Metadata
  NameMissing,
  OtherPrefix,
  UnknownWord,
  UnknownType,
  UnknownDataKey,
  ForeignDataKey,
  SingleQuote,
  NoUiApp,
  NoServiceApp,
  EmptyFeederValue,
  NoFeedUrl,
  UnknownScheme,
  ShortUrl,
  WebUrlRewritten,
  FileUrlForm,
  BoostValue,
  ColdBootValue,
  ListEntry,
  // The image and the files of a feed
  ImageMissing,
  ImageUnused,
  ImageIsZip,
  ImageUnknown,
  ImageUnreadable,
  ArchiveMissing,
  ArchiveDamaged,
  FeedFileMissing,
  FeedFileElsewhere,
  FeedFileNested,
  FeedFileNotJson,
  // Programs
  ServiceCannotRun,
  // The check itself
  NotChecked,
  Count
};

/// One message for a person: `text` says what is wrong and why, `fix` what to do about it. Both are
/// one sentence or more, on one line.
struct Finding {
  std::string id;  ///< stable, lower case with hyphens
  Severity severity = Severity::Warning;
  std::string text;
  std::string fix;
};

/// The message with %1, %2 … replaced by the arguments. Callable from any thread.
Finding MakeFinding(Message message, const std::vector<std::string>& arguments = {});

/// "error: <text> <fix> [<id>]"
std::string ToLine(const Finding& finding);
/// An array of objects: id, severity, text, fix.
Json::Value ToJson(const std::vector<Finding>& findings);

}  // namespace desk

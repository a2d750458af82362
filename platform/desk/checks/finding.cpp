// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/checks/finding.h"

#include <array>

namespace desk {
namespace {

struct Row {
  Message message;
  const char* id;
  Severity severity;
  const char* text;
  const char* fix;
};

constexpr Severity ERROR = Severity::Error;
constexpr Severity WARNING = Severity::Warning;

// In the order of Message.
constexpr std::array<Row, static_cast<std::size_t>(Message::Count)> ROWS = {{
    {Message::NameMissing, "name-missing", ERROR,
     "The metadata key \"%1\" ends after %2, without a name. The daemon logs an error and ignores "
     "it.",
     "Add \"/\" and a name, or remove the key."},
    {Message::OtherPrefix, "other-prefix", WARNING,
     "The metadata key \"%1\" names %2, but does not begin with %3. The daemon ignores it.",
     "Correct the beginning of the key."},
    {Message::UnknownWord, "unknown-word", WARNING,
     "The metadata key \"%1\" contains neither orv_type nor orv_data. The daemon ignores it.",
     "Write \"%2orv_type/<app type>\" or \"%2orv_data/<key>\"."},
    {Message::UnknownType, "unknown-type", WARNING,
     "\"%1\" is not an app type that the daemon knows.", "%2"},
    {Message::UnknownDataKey, "unknown-data-key", WARNING,
     "\"%1\" is not a data key that the daemon uses.", "%2"},
    {Message::ForeignDataKey, "foreign-data-key", WARNING,
     "The data key \"%1\" has no effect: no app type of this package uses it.",
     "Add the app type that it belongs to (%2), or remove the key."},
    {Message::SingleQuote, "single-quote", ERROR,
     "\"%1\" contains a single quote, and the daemon's store refuses the row: the app neither runs "
     "after an install nor survives a restart.",
     "Remove the quote."},
    {Message::NoUiApp, "no-ui-app", WARNING,
     "The package has no UI application, so it has no widget id. After an install the daemon waits "
     "for the next change of memory/was/app_install, which may be that of another package.",
     "Add a tizen:application."},
    {Message::NoServiceApp, "no-service-app", ERROR,
     "%1: the package has no service application to launch.", "Add a tizen:service."},
    {Message::EmptyFeederValue, "empty-feeder-value", WARNING,
     "%1: the value is empty. After a restart the scheduler skips the package.",
     "Give the key a value, for example \"standard\"."},
    {Message::NoFeedUrl, "no-feed-url", ERROR,
     "%1: the package gives no %2, so its channel has no such data.", "Add the data key %2."},
    {Message::UnknownScheme, "unknown-scheme", WARNING,
     "%1: %2 is \"%3\". The daemon knows only file:, http: and https:, in lower case, and passes "
     "this URL on unchanged.",
     "Correct the URL."},
    {Message::ShortUrl, "short-url", ERROR,
     "%1: %2 is \"%3\", shorter than 6 characters, and the other URL is a file. The daemon fails "
     "to insert the directory into it: the channel framework gets no record and outer layers do "
     "not run.",
     "Give both URLs."},
    {Message::WebUrlRewritten, "web-url-rewritten", ERROR,
     "%1: %2 is \"%3\", and the other URL is a file. The daemon inserts the directory of the "
     "package's files into this URL too.",
     "Use two file URLs or two web URLs."},
    {Message::FileUrlForm, "file-url-form", ERROR,
     "%1: %2 is \"%3\". The daemon inserts the directory after the sixth character, so the result "
     "does not name a file.",
     "Write \"file://<name>\", for example \"file://channel.json\"."},
    {Message::BoostValue, "boost-value", WARNING,
     "%1: ch.app.boosting is \"%2\". Only \"true\" makes the TV boost the app.",
     "Write \"true\", or remove the key."},
    {Message::ColdBootValue, "cold-boot-value", WARNING,
     "%1: custom_ui_cold_boot_opt is \"%2\", which the daemon handles like \"default\".",
     "Write \"default\", \"invisible\" or \"background_img\"."},
    {Message::ListEntry, "list-entry", WARNING,
     "%1: \"%2\" in its value is ignored. Blanks and case count.", "Use %3, separated by commas."},
    {Message::ImageMissing, "image-missing", ERROR,
     "%1: the package has no image %2 in its root%3. The daemon has nothing to unpack.",
     "Add the image. Its name is the widget id, on a desk the id of the UI application, and "
     "\".tmg\"."},
    {Message::ImageUnused, "image-unused", WARNING,
     "The image %1 is not used: no app type of the package unpacks it.",
     "Set the value of a feeder to \"extended\" or use a file URL, or remove the image."},
    {Message::ImageIsZip, "image-is-zip", ERROR,
     "%1: the image %2 is a zip archive, which the TV cannot mount.",
     "Put the archive into a file-system image under the name orv_app.zip: mksquashfs DIRECTORY "
     "%2"},
    {Message::ImageUnknown, "image-unknown", ERROR,
     "%1: the image %2 contains no file system that the TV can mount.",
     "Make a squashfs, ext or ISO image: mksquashfs DIRECTORY %2"},
    {Message::ImageUnreadable, "image-unreadable", WARNING,
     "%1: the contents of the image %2 could not be checked: %3.", "Check the image."},
    {Message::ArchiveMissing, "archive-missing", ERROR,
     "%1: the image %2 has no orv_app.zip in its root, so the daemon cannot unpack it.",
     "Put the app and its metadata directory into orv_app.zip, and that into the image."},
    {Message::ArchiveDamaged, "archive-damaged", ERROR,
     "%1: the daemon cannot unpack orv_app.zip of the image %2: %3.", "Pack it again."},
    {Message::FeedFileMissing, "feed-file-missing", ERROR,
     "%1: %2 names %3, but orv_app.zip of the image has no metadata/%3.",
     "Add the file, or correct the URL."},
    {Message::FeedFileElsewhere, "feed-file-elsewhere", ERROR,
     "%1: %2 names %3, but orv_app.zip of the image has it as %4. The daemon takes only files that "
     "are directly in metadata/.",
     "Move the file to metadata/%3."},
    {Message::FeedFileNested, "feed-file-nested", ERROR,
     "%1: %2 names %3, which is in a subdirectory. The daemon takes only files that are directly "
     "in metadata/.",
     "Move the file to metadata/ and remove the directory from the URL."},
    {Message::FeedFileNotJson, "feed-file-not-json", ERROR,
     "%1: metadata/%3, which %2 names, is not valid JSON: %4.", "Correct the file."},
    {Message::ServiceCannotRun, "service-cannot-run", ERROR,
     "The service %1 cannot run on a desk: %2.", "%3"},
    {Message::NotChecked, "not-checked", WARNING, "The package was not checked: %1.",
     "Run `tv explain` later."},
}};

constexpr bool InOrder() {
  for (std::size_t i = 0; i < ROWS.size(); ++i) {
    if (ROWS[i].message != static_cast<Message>(i)) {
      return false;
    }
  }
  return true;
}
static_assert(InOrder(), "the rows are in the order of Message");

std::string Fill(const char* pattern, const std::vector<std::string>& arguments) {
  std::string text;
  for (const char* at = pattern; *at != '\0'; ++at) {
    const bool placeholder = *at == '%' && at[1] >= '1' && at[1] <= '9';
    if (!placeholder) {
      text += *at;
      continue;
    }
    ++at;
    text += arguments.at(static_cast<std::size_t>(*at - '1'));
  }
  return text;
}

}  // namespace

const char* SeverityName(Severity severity) {
  return severity == Severity::Error ? "error" : "warning";
}

Finding MakeFinding(Message message, const std::vector<std::string>& arguments) {
  const Row& row = ROWS.at(static_cast<std::size_t>(message));
  return {row.id, row.severity, Fill(row.text, arguments), Fill(row.fix, arguments)};
}

std::string ToLine(const Finding& finding) {
  return std::string(SeverityName(finding.severity)) + ": " + finding.text + " " + finding.fix +
         " [" + finding.id + "]";
}

Json::Value ToJson(const std::vector<Finding>& findings) {
  Json::Value list(Json::arrayValue);
  for (const Finding& finding : findings) {
    Json::Value& item = list.append(Json::objectValue);
    item["id"] = finding.id;
    item["severity"] = SeverityName(finding.severity);
    item["text"] = finding.text;
    item["fix"] = finding.fix;
  }
  return list;
}

}  // namespace desk

// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/explain_effects.h"

#include <algorithm>

namespace desk::cli {
namespace {

using Lines = std::vector<std::string>;

/// When a row of the table applies.
enum class When {
  Always,
  PackagedData,   ///< the layer unpacks an image
  PackagedApp,    ///< and its app tree is used
  PackagedFiles,  ///< and its metadata files are used
  Boost,
  DueAtOnce,  ///< no due time in the metadata
  DueLater,
  Bridged,  ///< a replacement UI comes first
  NotBridged,
  EmptyValue,
  NotEmptyValue,
  ColdBootGiven  ///< together with NotEmptyValue
};

/// Rows are in the daemon's order. On a removal it stops the layers, deletes the record and then
/// releases the layers from the outermost to the innermost.
enum class Step { Install, Update, Stop, Release };

struct Row {
  const char* type;
  Step step;
  When when;
  const char* sentence;
  const char* call;
  const char* argument;
};

constexpr char RECORD[] = "";
constexpr char CUSTOM[] = "ch_feeder_custom";
constexpr char STANDARD[] = "ch_feeder_standard";
constexpr char SCREENS[] = "custom_ui_extended";
constexpr char BANNERS[] = "custom_ui_standard";
constexpr char UI_KEY[] = "db/orv_channel/custom_ui_type";

// Placeholders of the sentences: {package}, {ui}, {service}, {image}, {due}, {screens}, {key}. The
// arguments use those that are empty when the package lacks the app: {ui-id}, {service-id},
// {image-file}, {answering}.
constexpr Row BEFORE_LAYERS[] = {
    {RECORD, Step::Install, When::Always, "a record is created and its row is written to the store",
     "package_manager_get_package_info", "{package}"},
    {RECORD, Step::Install, When::Always,
     "the layers run now when the web-app service knows the widget id; otherwise after the next "
     "change of memory/was/app_install, whose value becomes the widget id",
     "", ""},
    {RECORD, Step::Update, When::Always,
     "the package's metadata is read again; a key that was read since the start of the daemon "
     "keeps its first value until the daemon restarts, even when the new version lacks the key",
     "package_manager_get_package_info", "{package}"},
};

constexpr Row LAYERS[] = {
    {CUSTOM, Step::Install, When::PackagedData,
     "mounts res/{image} and unpacks its orv_app.zip to hbbtv_app/{package}", "PS_Mount",
     "{image-file}"},
    {CUSTOM, Step::Install, When::DueAtOnce,
     "moves to the front of the scheduling list; {service} is launched once network time is set",
     "app_control_set_app_id", "{service-id}"},
    {CUSTOM, Step::Install, When::DueLater,
     "moves to the front of the scheduling list; {service} is launched once network time is set "
     "and {due} has passed",
     "", ""},
    {CUSTOM, Step::Update, When::Always,
     "does nothing while the value stays the same; otherwise \"extended\" installs the packaged "
     "app and any other value removes it",
     "", ""},
    {CUSTOM, Step::Stop, When::Always,
     "leaves the scheduling list; a running service app is terminated", "", ""},
    {CUSTOM, Step::Release, When::PackagedApp,
     "hbbtv_app/{package} is deleted when no other type uses it", "", ""},

    {STANDARD, Step::Install, When::PackagedData,
     "mounts res/{image} and unpacks its orv_app.zip to hbbtv_app/{package}", "PS_Mount",
     "{image-file}"},
    {STANDARD, Step::Install, When::PackagedFiles,
     "moves the files of the archive's metadata directory to metadata/{package}", "", ""},
    {STANDARD, Step::Install, When::PackagedFiles,
     "inserts the path of metadata/{package} after the sixth character of both URLs", "", ""},
    {STANDARD, Step::Install, When::Always,
     "the channel framework receives the record (CreateAppInfo)", "FCOrvAppInfoAPI::CreateAppInfo",
     "{package}"},
    {STANDARD, Step::Install, When::Boost, "tuning to its channel creates the boost flag file", "",
     ""},
    {STANDARD, Step::Update, When::PackagedData, "the packaged data is removed and installed again",
     "PS_Mount", "{image-file}"},
    {STANDARD, Step::Update, When::Always,
     "the channel framework receives the new URLs (UpdateAppInfo)",
     "FCOrvAppInfoAPI::UpdateAppInfo", "{package}"},
    {STANDARD, Step::Stop, When::Always, "the channel framework removes the record (RemoveAppInfo)",
     "FCOrvAppInfoAPI::RemoveAppInfo", "{package}"},
    {STANDARD, Step::Release, When::PackagedFiles, "metadata/{package} is deleted", "", ""},
    {STANDARD, Step::Release, When::PackagedApp,
     "hbbtv_app/{package} is deleted when no other type uses it", "", ""},

    {SCREENS, Step::Install, When::Always, "is announced as CustomApp in {key}", "vconf_set_str",
     "{key}"},
    {SCREENS, Step::Install, When::Bridged,
     "the replacement UI of /opt/share/orv_ch/replacement_ui_info.json answers {screens} for up to "
     "20 seconds, then {ui}",
     "", ""},
    {SCREENS, Step::Install, When::NotBridged, "{ui} becomes the app that answers {screens}",
     "app_operation_set_current_app", "{answering}"},
    {SCREENS, Step::Install, When::NotBridged, "{ui} is started in the background",
     "app_control_set_app_id", "{ui-id}"},
    {SCREENS, Step::Install, When::Bridged,
     "{ui} is started in the background when the file names a replacement UI", "", ""},
    {SCREENS, Step::Update, When::EmptyValue, "does nothing while the new value is empty too", "",
     ""},
    {SCREENS, Step::Update, When::NotEmptyValue,
     "does nothing while the value and the cold-boot option stay the same; otherwise the screens "
     "are handed back and taken over again",
     "", ""},
    {SCREENS, Step::Update, When::ColdBootGiven,
     "the first update resets the cold-boot option, and so counts as a change", "", ""},
    {SCREENS, Step::Stop, When::Bridged,
     "takes {screens} over once more (background_img) and is no longer announced", "vconf_set_str",
     "{key}"},
    {SCREENS, Step::Stop, When::NotBridged, "hands {screens} back and is no longer announced",
     "vconf_set_str", "{key}"},

    {BANNERS, Step::Install, When::Always, "is announced as CustomBanner in {key}", "vconf_set_str",
     "{key}"},
    {BANNERS, Step::Install, When::Always, "{ui} is started in the background",
     "app_control_set_app_id", "{ui-id}"},
    {BANNERS, Step::Update, When::EmptyValue, "does nothing while the new value is empty too", "",
     ""},
    {BANNERS, Step::Update, When::NotEmptyValue,
     "does nothing while the list of banners and the cold-boot option stay the same; otherwise it "
     "is announced and started again",
     "", ""},
    {BANNERS, Step::Update, When::ColdBootGiven,
     "the first update resets the cold-boot option, and so counts as a change", "vconf_set_str",
     "{key}"},
    {BANNERS, Step::Stop, When::Always, "is no longer announced", "vconf_set_str", "{key}"},
};

constexpr Row AFTER_LAYERS[] = {
    {RECORD, Step::Update, When::Always,
     "a type that the new version lacks is removed and cleans up; one that it adds has no effect "
     "until the package is uninstalled and installed again",
     "", ""},
    {RECORD, Step::Stop, When::Always, "the record and its row are deleted", "", ""},
};

bool Applies(When when, const Layer& layer) {
  const int packaged = PackagedDataOf(layer);
  const std::string option = layer.Data("custom_ui_cold_boot_opt");
  switch (when) {
    case When::Always:
      return true;
    case When::PackagedData:
      return packaged != 0;
    case When::PackagedApp:
      return (packaged & PACKAGED_APP) != 0;
    case When::PackagedFiles:
      return (packaged & PACKAGED_FILES) != 0;
    case When::Boost:
      return layer.Data("ch.app.boosting") == "true";
    case When::DueAtOnce:
      return layer.Data("expiration_date_str").empty();
    case When::DueLater:
      return !layer.Data("expiration_date_str").empty();
    case When::Bridged:
      return option == "background_img";
    case When::NotBridged:
      return option != "background_img";
    case When::EmptyValue:
      return layer.value.empty();
    case When::NotEmptyValue:
      return !layer.value.empty();
    case When::ColdBootGiven:
      return !layer.value.empty() && !option.empty();
  }
  return false;
}

/// The screens of the value that the daemon knows, in the value's order.
std::string ScreensOf(const Layer& layer) {
  std::string screens;
  for (std::size_t start = 0; start <= layer.value.size();) {
    const std::size_t comma = std::min(layer.value.find(',', start), layer.value.size());
    const std::string piece = layer.value.substr(start, comma - start);
    if (piece == "channel_list" || piece == "epg") {
      screens += (screens.empty() ? "" : ", ") + piece;
    }
    start = comma + 1;
  }
  return screens;
}

class EffectList {
 public:
  EffectList(const PackageFacts& package, const Ruling& ruling)
      : m_ruling(ruling), m_values{{"package", package.id}, {"key", UI_KEY}} {
    const std::string& ui = ruling.uiApp;
    m_values["ui-id"] = ui;
    m_values["service-id"] = ruling.serviceApp;
    m_values["image-file"] = ui.empty() ? "" : ui + ".tmg";
    m_values["ui"] = ui.empty() ? "no app" : ui;
    m_values["image"] = (ui.empty() ? "<widget id>" : ui) + ".tmg";
    m_values["service"] = ruling.serviceApp.empty() ? "no service application" : ruling.serviceApp;
  }

  std::vector<Effect> Tell() {
    const Layer record;
    AddRows(BEFORE_LAYERS, record);
    for (const auto& layer : m_ruling.layers) {
      AddRows(LAYERS, layer, Step::Release);
    }
    AddRows(AFTER_LAYERS, record);
    for (auto layer = m_ruling.layers.rbegin(); layer != m_ruling.layers.rend(); ++layer) {
      AddReleases(*layer);
    }
    return std::move(m_effects);
  }

 private:
  template <std::size_t N>
  void AddRows(const Row (&rows)[N], const Layer& layer, Step except = Step::Release) {
    for (const Row& row : rows) {
      if (row.step != except) {
        Add(row, layer);
      }
    }
  }

  void AddReleases(const Layer& layer) {
    for (const Row& row : LAYERS) {
      if (row.step == Step::Release) {
        Add(row, layer);
      }
    }
  }

  void Add(const Row& row, const Layer& layer) {
    if (layer.type != row.type || !Applies(row.when, layer)) {
      return;
    }
    const std::string screens = ScreensOf(layer);
    m_values["screens"] = screens.empty() ? "no screen" : screens;
    m_values["answering"] = screens.empty() ? "" : m_ruling.uiApp;
    m_values["due"] = layer.Data("expiration_date_str");
    Effect effect;
    effect.occasion = row.step == Step::Install  ? Occasion::Install
                      : row.step == Step::Update ? Occasion::Update
                                                 : Occasion::Removal;
    effect.type = row.type;
    effect.sentence = Fill(row.sentence);
    effect.argument = Fill(row.argument);
    effect.call = effect.argument.empty() ? "" : row.call;
    m_effects.push_back(std::move(effect));
  }

  std::string Fill(const char* pattern) const {
    std::string text = pattern;
    for (const auto& [name, value] : m_values) {
      const std::string placeholder = "{" + name + "}";
      for (std::size_t at = text.find(placeholder); at != std::string::npos;
           at = text.find(placeholder, at + value.size())) {
        text.replace(at, placeholder.size(), value);
      }
    }
    return text;
  }

  const Ruling& m_ruling;
  std::map<std::string, std::string> m_values;
  std::vector<Effect> m_effects;
};

std::string Quoted(const std::string& text) {
  return "\"" + text + "\"";
}

}  // namespace

const char* OccasionName(Occasion occasion) {
  switch (occasion) {
    case Occasion::Install:
      return "install";
    case Occasion::Update:
      return "update";
    case Occasion::Removal:
      break;
  }
  return "removal";
}

std::vector<Effect> TellEffects(const PackageFacts& package, const Ruling& ruling) {
  if (ruling.outcome != Ruling::Outcome::ChannelBound) {
    return {};
  }
  return EffectList(package, ruling).Tell();
}

std::vector<std::string> LinesOf(const std::vector<Effect>& effects, Occasion occasion) {
  Lines lines;
  for (const auto& effect : effects) {
    if (effect.occasion == occasion) {
      lines.push_back((effect.type.empty() ? "" : effect.type + ": ") + effect.sentence);
    }
  }
  return lines;
}

std::vector<std::string> TellTypeChanges(const Ruling& ruling,
                                         const std::map<std::string, std::string>& heldTypes) {
  if (ruling.types.empty()) {
    return {"no type is left: the app is stopped and its record is deleted"};
  }
  Lines lines;
  for (const auto& held : heldTypes) {
    const auto now = ruling.types.find(held.first);
    if (now == ruling.types.end()) {
      lines.push_back(held.first + ": is removed");
    } else {
      lines.push_back(held.first + ": is kept" +
                      (now->second == held.second
                           ? std::string()
                           : ", " + Quoted(held.second) + " becomes " + Quoted(now->second)));
    }
  }
  for (const auto& layer : ruling.layers) {
    if (heldTypes.count(layer.type) == 0) {
      lines.push_back(layer.type +
                      ": is added, but has no effect until the package is uninstalled and "
                      "installed again");
    }
  }
  return lines;
}

}  // namespace desk::cli

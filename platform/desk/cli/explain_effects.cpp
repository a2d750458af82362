// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "cli/explain_effects.h"

#include <algorithm>

namespace desk {
namespace {

constexpr int PACKAGED_APP = 1;
constexpr int PACKAGED_METADATA = 2;
constexpr size_t SCHEME_LENGTH = 6;  // "file:/", behind which the directory is inserted
const char* const COLD_BOOT = "custom_ui_cold_boot_opt";
const char* const UI_KEY = "db/orv_channel/custom_ui_type";

using Lines = std::vector<std::string>;

std::string Quoted(const std::string& text) {
  return "\"" + text + "\"";
}

std::string Scheme(const std::string& url) {
  const auto colon = url.find(':');
  return colon == std::string::npos ? "" : url.substr(0, colon);
}

/// Collects the lines of one package.
class Teller {
 public:
  Teller(const PackageFacts& package, const Ruling& ruling)
      : m_package(package), m_ruling(ruling) {}

  Effects Tell() {
    Begin();
    for (const auto& layer : m_ruling.layers) {
      TellLayer(layer);
    }
    End();
    return std::move(m_effects);
  }

 private:
  static void Add(Lines& lines, const Layer& layer, const std::string& text) {
    lines.push_back(layer.type + ": " + text);
  }

  void Begin() {
    WarnOfQuotes();
    m_effects.install.push_back("a record is made and its row written to the store");
    if (m_ruling.uiApp.empty()) {
      m_effects.warnings.push_back(
          "the package has no UI application, so no widget id belongs to it: after an install the "
          "daemon waits for the next change of memory/was/app_install, whoever that is for");
    }
    m_effects.install.push_back(
        "the layers run now when the web-app service knows the widget id, else after the next "
        "change of memory/was/app_install, whose value is taken for the widget id");
    m_effects.update.push_back(
        "what the package says is read again; a key that was read before since the daemon started "
        "keeps its first value, also when the new version lacks it, until the daemon starts anew");
  }

  /// Values go into the store's statements as they are.
  void WarnOfQuotes() {
    Lines texts = {m_package.id, m_package.version, m_ruling.uiApp, m_ruling.serviceApp};
    for (const auto& layer : m_ruling.layers) {
      texts.push_back(layer.value);
      for (const auto& entry : layer.data) {
        texts.push_back(entry.second);
      }
    }
    for (const auto& text : texts) {
      if (text.find('\'') != std::string::npos) {
        m_effects.warnings.push_back(Quoted(text) +
                                     " holds a single quote: the store refuses the row, so an "
                                     "install neither runs the app nor survives a restart");
      }
    }
  }

  void End() {
    m_effects.update.push_back(
        "a type that the new version lacks is taken out and cleans up; one "
        "that it adds has no effect until the package is installed anew");
    m_effects.removal.push_back("the record and its row go");
    for (auto layer = m_ruling.layers.rbegin(); layer != m_ruling.layers.rend(); ++layer) {
      TellRelease(*layer);
    }
  }

  void TellLayer(const Layer& layer) {
    if (layer.type == "ch_feeder_custom") {
      TellCustomFeeder(layer);
    } else if (layer.type == "ch_feeder_standard") {
      TellStandardFeeder(layer);
    } else if (layer.type == "custom_ui_extended") {
      TellScreens(layer);
    } else {
      TellBanners(layer);
    }
  }

  // ---- ch_feeder_custom

  void TellCustomFeeder(const Layer& layer) {
    TellPackagedInstall(layer, layer.value == "extended" ? PACKAGED_APP : 0);
    const std::string due = layer.Data("expiration_date_str");
    Add(m_effects.install, layer,
        "goes to the front of the scheduling list; " +
            (m_ruling.serviceApp.empty() ? "no service application" : m_ruling.serviceApp) +
            " is launched once network time is set" +
            (due.empty() ? "" : " and " + due + " is over"));
    Add(m_effects.update, layer,
        "nothing while the value is the same; else " + Quoted("extended") +
            " installs the packaged app, and any other value removes it");
    Add(m_effects.removal, layer, "leaves the scheduling list; a running service app is ended");
    WarnOfCustomFeeder(layer);
  }

  void WarnOfCustomFeeder(const Layer& layer) {
    if (m_ruling.serviceApp.empty()) {
      Add(m_effects.warnings, layer, "the package has no service application to launch");
    }
    if (layer.value.empty()) {
      Add(m_effects.warnings, layer,
          "the value is empty: later passes of the scheduler leave the package out");
    }
  }

  // ---- ch_feeder_standard

  void TellStandardFeeder(const Layer& layer) {
    const int packaged = PackagedDataOf(layer);
    TellPackagedInstall(layer, packaged);
    if ((packaged & PACKAGED_METADATA) != 0) {
      Add(m_effects.install, layer,
          "the directory metadata/" + m_package.id +
              " is put into both URLs behind their sixth "
              "character");
    }
    Add(m_effects.install, layer, "the channel framework gets the record (CreateAppInfo)");
    if (packaged != 0) {
      Add(m_effects.update, layer, "packaged data is removed and installed again");
    }
    Add(m_effects.update, layer, "the channel framework gets the new URLs (UpdateAppInfo)");
    Add(m_effects.removal, layer, "the channel framework drops the record (RemoveAppInfo)");
    WarnOfUrls(layer, packaged);
  }

  void WarnOfUrls(const Layer& layer, int packaged) {
    for (const char* key : {"channel_data_url", "schedule_data_url"}) {
      const std::string url = layer.Data(key);
      const std::string scheme = Scheme(url);
      const bool known = scheme == "file" || scheme == "http" || scheme == "https";
      if (!url.empty() && !known) {
        Add(m_effects.warnings, layer,
            std::string(key) + " " + Quoted(url) +
                " has no scheme that the daemon knows (file, http, https): it is passed on as it "
                "is");
      }
      if ((packaged & PACKAGED_METADATA) == 0) {
        continue;
      }
      if (url.size() < SCHEME_LENGTH) {
        Add(m_effects.warnings, layer,
            std::string(key) + " " + Quoted(url) +
                " is shorter than 6 characters, while the other URL is a file: putting the "
                "directory "
                "in fails, the framework gets no record and outer layers do not run");
      } else if (scheme != "file") {
        Add(m_effects.warnings, layer,
            std::string(key) + " " + Quoted(url) +
                " gets the directory put into it too, since the other URL is a file");
      }
    }
    WarnOfBoost(layer);
  }

  void WarnOfBoost(const Layer& layer) {
    const std::string boost = layer.Data("ch.app.boosting");
    if (boost == "true") {
      Add(m_effects.install, layer, "tuning to its channel makes the boost flag file");
    } else if (!boost.empty()) {
      Add(m_effects.warnings, layer,
          "ch.app.boosting is " + Quoted(boost) + ": only \"true\" boosts");
    }
  }

  // ---- packaged data

  void TellPackagedInstall(const Layer& layer, int packaged) {
    if (packaged == 0) {
      return;
    }
    const std::string image = (m_ruling.uiApp.empty() ? "<widget id>" : m_ruling.uiApp) + ".tmg";
    Add(m_effects.install, layer,
        "mounts res/" + image + " and unpacks its orv_app.zip to hbbtv_app/" + m_package.id +
            ((packaged & PACKAGED_METADATA) != 0
                 ? "; the files of its metadata directory move to metadata/" + m_package.id
                 : ""));
    const auto& images = m_package.images;
    if (std::find(images.begin(), images.end(), image) == images.end()) {
      Add(m_effects.warnings, layer,
          "the package holds no image " + image +
              " in its root: unless the widget id is another "
              "one, only /home/owner/share/tmp/sdk_tools/orv_app.zip can be unpacked instead");
    }
  }

  void TellRelease(const Layer& layer) {
    const bool custom = layer.type == "ch_feeder_custom";
    const int packaged = custom ? (layer.value == "extended" ? PACKAGED_APP : 0)
                         : layer.type == "ch_feeder_standard" ? PackagedDataOf(layer)
                                                              : 0;
    if ((packaged & PACKAGED_METADATA) != 0) {
      Add(m_effects.removal, layer, "metadata/" + m_package.id + " is removed");
    }
    if ((packaged & PACKAGED_APP) != 0) {
      Add(m_effects.removal, layer,
          "hbbtv_app/" + m_package.id + " is removed when no other type uses it");
    }
  }

  // ---- custom UIs

  /// The names of the list that count; each other one is warned of.
  Lines NamesOf(const Layer& layer, const Lines& known) {
    Lines names;
    size_t start = 0;
    while (start <= layer.value.size()) {
      const size_t comma = std::min(layer.value.find(',', start), layer.value.size());
      const std::string piece = layer.value.substr(start, comma - start);
      if (std::find(known.begin(), known.end(), piece) != known.end()) {
        names.push_back(piece);
      } else {
        Add(m_effects.warnings, layer,
            Quoted(piece) + " is none of " + Listed(known, " and ") +
                " (blanks and case count): it is passed over");
      }
      start = comma + 1;
    }
    return names;
  }

  static std::string Listed(const Lines& names, const char* between) {
    std::string text;
    for (const auto& name : names) {
      text += (text.empty() ? "" : between) + name;
    }
    return text;
  }

  void TellScreens(const Layer& layer) {
    const Lines screens = NamesOf(layer, {"channel_list", "epg"});
    const std::string list = screens.empty() ? "no screen" : Listed(screens, ", ");
    const bool bridged = layer.Data(COLD_BOOT) == "background_img";
    Add(m_effects.install, layer, std::string("announces itself as CustomApp in ") + UI_KEY);
    Add(m_effects.install, layer,
        bridged ? "the replacement UI of /opt/share/orv_ch/replacement_ui_info.json answers " +
                      list + " for up to 20 seconds, then " + m_ruling.uiApp
                : m_ruling.uiApp + " becomes the app that answers " + list);
    Add(m_effects.install, layer, m_ruling.uiApp + " is started in the background");
    TellUiUpdate(layer, "the value", "the screens are handed back and taken over anew");
    Add(m_effects.removal, layer,
        bridged ? "takes " + list + " over once more (background_img), and is no longer announced"
                : "hands " + list + " back and is no longer announced");
    WarnOfUi(layer);
  }

  void TellBanners(const Layer& layer) {
    NamesOf(layer, {"info", "channel"});
    Add(m_effects.install, layer, std::string("announces itself as CustomBanner in ") + UI_KEY);
    Add(m_effects.install, layer, m_ruling.uiApp + " is started in the background");
    TellUiUpdate(layer, "the list of banners", "announced and started anew");
    Add(m_effects.removal, layer, "is no longer announced");
    WarnOfUi(layer);
  }

  void TellUiUpdate(const Layer& layer, const std::string& what, const std::string& change) {
    if (layer.value.empty()) {
      Add(m_effects.update, layer, "nothing while the new value is empty too");
      return;
    }
    Add(m_effects.update, layer,
        "nothing while " + what + " and the cold-boot option are the same; else " + change);
    if (!layer.Data(COLD_BOOT).empty()) {
      Add(m_effects.update, layer,
          "the first update forgets the cold-boot option, and so counts as a change");
    }
  }

  void WarnOfUi(const Layer& layer) {
    if (m_ruling.uiApp.empty()) {
      Add(m_effects.warnings, layer, "the package has no UI application to start");
    }
  }

  const PackageFacts& m_package;
  const Ruling& m_ruling;
  Effects m_effects;
};

}  // namespace

int PackagedDataOf(const Layer& layer) {
  const bool files = Scheme(layer.Data("channel_data_url")) == "file" ||
                     Scheme(layer.Data("schedule_data_url")) == "file";
  return (layer.value == "extended" ? PACKAGED_APP : 0) | (files ? PACKAGED_METADATA : 0);
}

Effects TellEffects(const PackageFacts& package, const Ruling& ruling) {
  if (ruling.outcome != Ruling::Outcome::ChannelBound) {
    return Effects();
  }
  return Teller(package, ruling).Tell();
}

std::vector<std::string> TellTypeChanges(const Ruling& ruling,
                                         const std::map<std::string, std::string>& heldTypes) {
  if (ruling.outcome == Ruling::Outcome::Broken) {
    return {"the update ends with an error and changes nothing"};
  }
  if (ruling.types.empty()) {
    return {"no type is left: the app is stopped and its record removed"};
  }
  Lines lines;
  for (const auto& held : heldTypes) {
    const auto now = ruling.types.find(held.first);
    if (now == ruling.types.end()) {
      lines.push_back(held.first + ": is taken out");
    } else {
      lines.push_back(held.first + ": stays" +
                      (now->second == held.second
                           ? std::string()
                           : ", " + Quoted(held.second) + " becomes " + Quoted(now->second)));
    }
  }
  for (const auto& layer : ruling.layers) {
    if (heldTypes.count(layer.type) == 0) {
      lines.push_back(layer.type +
                      ": is built, but has no effect until the package is installed anew");
    }
  }
  return lines;
}

}  // namespace desk

// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "app_info/AppInfo.h"
#include "app_info/AppInfoCache.h"

/// A record that adds itself to the cache (not to the store) and records its operations in one list
/// for all records: "a.run(true)". Owned by the test; the daemon never destroys it,
/// since no type is registered under its type name.
class RecordingApp final : public AppInfo {
 public:
  explicit RecordingApp(const std::string& package, const std::string& widget = "widget") {
    m_sPackageID = package;
    m_sAppID = package + ".ui";
    m_sServiceID = package + ".service";
    m_sWidgetID = widget;
    AppInfoCache::GetInstance()->AddAppInfo(package, this, false);
  }

  /// All operations of all records so far.
  static std::vector<std::string> Operations() {
    const std::lock_guard<std::mutex> lock(s_mutex);
    return s_operations;
  }
  static void ClearOperations() {
    const std::lock_guard<std::mutex> lock(s_mutex);
    s_operations.clear();
  }

  /// Runs within every operation, after it is recorded. Set while no operation can run, or from the
  /// hook itself.
  void SetHook(std::function<void()> hook) { m_hook = std::move(hook); }
  /// Runs whenever a value or the type is read.
  void SetReadHook(std::function<void()> hook) { m_readHook = std::move(hook); }
  /// Every operation throws this from now on, after it is recorded.
  void Throw(const std::string& what) { m_what = what; }
  void Put(const std::string& type, const std::string& key, const std::string& value) {
    m_metadata[type][key] = value;
  }

  void RunOperation(bool bStarted) override { Note(bStarted ? "run(true)" : "run(false)"); }
  void UpdateOperation() override { Note("update"); }
  void StopOperation() override { Note("stop"); }
  void SetMetadata(const std::string& type, const std::pair<std::string, std::string>& keyValue,
                   bool bUpdatable) override {
    Note("set(" + type + "," + keyValue.first + "," + keyValue.second + "," +
         (bUpdatable ? "true)" : "false)"));
    m_metadata[type][keyValue.first] = keyValue.second;
  }
  std::string GetMetadata(const std::string& type, const std::string& key) const override {
    if (const auto hook = m_readHook) {
      hook();
    }
    const auto category = m_metadata.find(type);
    if (category == m_metadata.end()) {
      return {};
    }
    const auto entry = category->second.find(key);
    return entry == category->second.end() ? std::string() : entry->second;
  }
  void GetAllMetadata(MetadataMap& metadata) const override {
    if (const auto hook = m_readHook) {
      hook();
    }
    metadata = m_metadata;
  }
  void RemoveMetadata(const std::string&, const std::string&) override {}
  AppInfo* ExtractTargetAppType(const std::string&, AppInfo**) override { return nullptr; }
  const std::string& GetAppType() const override {
    if (const auto hook = m_readHook) {
      hook();
    }
    return m_type;
  }
  ReleaseFunction GetReleaseFunction() const override {
    return [](AppInfo*) {};
  }

 private:
  void Note(const std::string& operation) {
    {
      const std::lock_guard<std::mutex> lock(s_mutex);
      s_operations.push_back(m_sPackageID + "." + operation);
    }
    if (const auto hook = m_hook) {
      hook();
    }
    if (!m_what.empty()) {
      throw std::runtime_error(m_what);
    }
  }

  inline static std::mutex s_mutex;
  inline static std::vector<std::string> s_operations;
  std::function<void()> m_hook;
  std::function<void()> m_readHook;
  std::string m_what;
  std::string m_type = "recording";
  MetadataMap m_metadata;
};

// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// Called on a thread of the library's own, and not before the process's main loop runs. pData is
/// the signal's payload, valid during the call, at least 8 bytes long and zero-padded.
typedef int (*TVSSignalCallback)(int signalType, const void* pData, void* pUserData);

/// The mode that the TV is in: which of its outputs and which kind of source.
struct TSTvMode {
  int output = 0;
  int source = 0;
};

/// The fields of one service, by field number. A plain value.
class TCServiceData {
 public:
  /// False, and the argument untouched, when the field is absent or of the other kind.
  bool Get(int field, std::uint64_t& rValue) const;
  /// The text may hold NUL bytes.
  bool Get(int field, std::string& rValue) const;
  void Set(int field, std::uint64_t value);
  void Set(int field, const std::string& rValue);

 private:
  std::map<int, std::uint64_t> m_mapNumbers;
  std::map<int, std::string> m_mapTexts;
};

/// What to look for and which fields to bring. A plain value.
class TCCriteriaHelper {
 public:
  void Where(int field, std::uint64_t value) { m_mapWhere[field] = value; }
  void Fetch(int field) { m_vFetch.push_back(field); }
  const std::map<int, std::uint64_t>& GetConditions() const { return m_mapWhere; }
  const std::vector<int>& GetFields() const { return m_vFetch; }

 private:
  std::map<int, std::uint64_t> m_mapWhere;
  std::vector<int> m_vFetch;
};

class TCService {
 public:
  /// The number of services found (at most maxCount), or a number below 1.
  virtual int FindService(const TCCriteriaHelper& rCriteria, TCServiceData& rData,
                          int maxCount) = 0;

 protected:
  virtual ~TCService() = default;
  friend class TVServiceAPI;
};

class TCServiceNavigation {
 public:
  /// Both return a number below 1 on a failure.
  virtual int GetTVMode(TSTvMode& rMode) = 0;
  virtual int GetCurrentServiceInfo(const TSTvMode& rMode, const TCCriteriaHelper& rCriteria,
                                    TCServiceData& rData) = 0;

 protected:
  virtual ~TCServiceNavigation() = default;
  friend class TVServiceAPI;
};

class TCSignalSubscriber {
 public:
  virtual int Subscribe(int signalType, int first, int second, int third, int fourth) = 0;

 protected:
  virtual ~TCSignalSubscriber() = default;
};

class TVServiceAPI {
 public:
  /// 0 on success. *ppSubscriber is owned by the library and lives as long as the process.
  static int CreateSignalSubscriber(TVSSignalCallback pCallback, TCSignalSubscriber** ppSubscriber);
  /// *ppService is owned by the caller until Destroy(), and null on a failure. 0 on success.
  static int CreateService(TCService** ppService);
  static int CreateServiceNavigation(int output, int source, TCServiceNavigation** ppNavigation);
  static void Destroy(TCService* pService);
  static void Destroy(TCServiceNavigation* pNavigation);
};

// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// Called on a thread of the library, one call at a time, and not before the process's main loop
/// runs. pData is the signal's payload, valid during the call, at least 8 bytes long and
/// zero-padded; that of a tune (signal 103) begins with the service id in the machine's byte order.
/// pUserData is null; the callback's result is ignored.
typedef int (*TVSSignalCallback)(int signalType, const void* pData, void* pUserData);

/// The mode that the TV is in: which of its outputs and which kind of source. Read and
/// passed back unchanged; the numbers are the service's own.
struct TSTvMode {
  int output = 0;
  int source = 0;
};

/// The fields of one service, by field number: 12 is the service id, a number, 179 the id of the
/// service's package, a text. A field is present only when it was fetched and the service has it. A
/// plain value.
class TCServiceData {
 public:
  /// False, and the argument untouched, when the field is absent or of the other kind.
  bool Get(int field, std::uint64_t& rValue) const;
  /// The text may hold NUL bytes.
  bool Get(int field, std::string& rValue) const;
  /// For backends. Replaces the field's value, also one of the other kind.
  void Set(int field, std::uint64_t value);
  void Set(int field, const std::string& rValue);

 private:
  std::map<int, std::uint64_t> m_mapNumbers;
  std::map<int, std::string> m_mapTexts;
};

/// The conditions of a search, each on a number, and the fields to fetch. A service must meet all
/// conditions. A backend must support a search by the service id (field 12). A plain value.
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

/// The service list. An object is used by one thread at a time; its calls block until the service
/// has replied.
class TCService {
 public:
  /// The number of services found (at most maxCount), or a number below 1: none, or a failure.
  /// rData gets the fields of the first one found, and is untouched when there is none.
  virtual int FindService(const TCCriteriaHelper& rCriteria, TCServiceData& rData,
                          int maxCount) = 0;

 protected:
  virtual ~TCService() = default;
  friend class TVServiceAPI;
};

/// The tuned service. Threads and blocking as with TCService.
class TCServiceNavigation {
 public:
  /// Both return a number below 1 on a failure, the latter also when nothing is tuned. The tuned
  /// service need not be in the list: then it has no package.
  virtual int GetTVMode(TSTvMode& rMode) = 0;
  virtual int GetCurrentServiceInfo(const TSTvMode& rMode, const TCCriteriaHelper& rCriteria,
                                    TCServiceData& rData) = 0;

 protected:
  virtual ~TCServiceNavigation() = default;
  friend class TVServiceAPI;
};

class TCSignalSubscriber {
 public:
  /// 0 on success. Delivers the signals of this type from now on; it cannot be ended. The four
  /// numbers are the service's own filters: the daemon passes 0, 1, 0, 0.
  virtual int Subscribe(int signalType, int first, int second, int third, int fourth) = 0;

 protected:
  virtual ~TCSignalSubscriber() = default;
};

class TVServiceAPI {
 public:
  /// 0 on success: then *ppSubscriber is owned by the library and lives as long as the process.
  static int CreateSignalSubscriber(TVSSignalCallback pCallback, TCSignalSubscriber** ppSubscriber);
  /// 0 on success: then the object is owned by the caller until Destroy(). It is null on a failure.
  /// output and source choose as in TSTvMode. Callable from any thread.
  static int CreateService(TCService** ppService);
  static int CreateServiceNavigation(int output, int source, TCServiceNavigation** ppNavigation);
  /// Accept null.
  static void Destroy(TCService* pService);
  static void Destroy(TCServiceNavigation* pNavigation);
};

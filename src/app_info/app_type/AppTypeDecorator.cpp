// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/AppTypeDecorator.h"

#include "common/Log.h"
#include "common/ORVConstants.h"

AppTypeDecorator::AppTypeDecorator(AppInfo* pAppInfo, const std::string& rType,
                                   const std::string& rValue)
    : m_pAppInfo(pAppInfo), m_AppliedAppType(rType, rValue), m_UpdatableAppType(rType, "") {
  m_sPackageID = pAppInfo->m_sPackageID;
  m_sAppID = pAppInfo->m_sAppID;
  m_sWidgetID = pAppInfo->m_sWidgetID;
  m_sServiceID = pAppInfo->m_sServiceID;
  m_sVersion = pAppInfo->m_sVersion;
}

AppTypeDecorator::~AppTypeDecorator() {
  if (m_pAppInfo == nullptr) {
    return;
  }
  const ReleaseFunction pfnRelease = m_pAppInfo->GetReleaseFunction();
  if (pfnRelease != nullptr) {
    pfnRelease(m_pAppInfo);
  }
}

void AppTypeDecorator::RunOperation(bool bStarted) {
  m_pAppInfo->RunOperation(bStarted);
}

void AppTypeDecorator::UpdateOperation() {
  m_pAppInfo->UpdateOperation();
}

void AppTypeDecorator::StopOperation() {
  m_pAppInfo->StopOperation();
}

void AppTypeDecorator::SetMetadata(const std::string& rType,
                                   const std::pair<std::string, std::string>& rKeyValue,
                                   bool bUpdatable) {
  m_pAppInfo->SetMetadata(rType, rKeyValue, bUpdatable);
  const std::lock_guard<std::mutex> lock(m_mutexMetadata);
  if (bUpdatable) {
    SetUpdatableMetadata(rType, rKeyValue);
  } else {
    SetAppliedMetadata(rType, rKeyValue);
  }
}

void AppTypeDecorator::SetUpdatableMetadata(const std::string& rType,
                                            const std::pair<std::string, std::string>& rKeyValue) {
  if (rType == METADATA_ORV_TYPE) {
    if (rKeyValue.first == m_UpdatableAppType.first) {
      m_UpdatableAppType.second = rKeyValue.second;
    }
  } else if (rType == METADATA_ORV_DATA) {
    const auto iter = m_mapUpdatableData.find(rKeyValue.first);
    if (iter != m_mapUpdatableData.end()) {
      iter->second = rKeyValue.second;
    }
  }
}

void AppTypeDecorator::SetAppliedMetadata(const std::string& rType,
                                          const std::pair<std::string, std::string>& rKeyValue) {
  // A type value in force is set by the constructor and by UpdateOperation() only.
  if (rType == METADATA_ORV_TYPE) {
    return;
  }
  // Any other category counts as data here, unlike in SetUpdatableMetadata(). Intentional:
  // docs/behaviour.md, "Any other category writes and reads applied data".
  const auto iter = m_mapAppliedData.find(rKeyValue.first);
  if (iter != m_mapAppliedData.end()) {
    iter->second = rKeyValue.second;
  }
}

std::string AppTypeDecorator::GetMetadata(const std::string& rType, const std::string& rKey) const {
  {
    const std::lock_guard<std::mutex> lock(m_mutexMetadata);
    if (rType == METADATA_ORV_TYPE) {
      if (rKey == m_AppliedAppType.first) {
        return m_AppliedAppType.second;
      }
    } else {
      const auto iter = m_mapAppliedData.find(rKey);
      if (iter != m_mapAppliedData.end()) {
        return iter->second;
      }
    }
  }
  return m_pAppInfo->GetMetadata(rType, rKey);
}

void AppTypeDecorator::GetAllMetadata(MetadataMap& rMetadata) const {
  m_pAppInfo->GetAllMetadata(rMetadata);
  const std::lock_guard<std::mutex> lock(m_mutexMetadata);
  rMetadata[METADATA_ORV_TYPE].insert(m_AppliedAppType);
  rMetadata[METADATA_ORV_DATA].insert(m_mapAppliedData.begin(), m_mapAppliedData.end());
}

void AppTypeDecorator::RemoveMetadata(const std::string& rFirst, const std::string& rSecond) {
  m_pAppInfo->RemoveMetadata(rFirst, rSecond);
  const std::lock_guard<std::mutex> lock(m_mutexMetadata);
  // Both are keys of the same map. Intentional: docs/behaviour.md, "A removal of two keys erases
  // the second one".
  if (m_mapAppliedData.count(rFirst) != 0) {
    m_mapAppliedData.erase(rSecond);
  }
}

std::string AppTypeDecorator::GetValue(bool bUpdatable) const {
  const std::lock_guard<std::mutex> lock(m_mutexMetadata);
  return bUpdatable ? m_UpdatableAppType.second : m_AppliedAppType.second;
}

AppTypeDecorator::DataMap AppTypeDecorator::GetData(bool bUpdatable) const {
  const std::lock_guard<std::mutex> lock(m_mutexMetadata);
  return bUpdatable ? m_mapUpdatableData : m_mapAppliedData;
}

std::string AppTypeDecorator::GetDataOrCreate(bool bUpdatable, const std::string& rKey) {
  const std::lock_guard<std::mutex> lock(m_mutexMetadata);
  return (bUpdatable ? m_mapUpdatableData : m_mapAppliedData)[rKey];
}

void AppTypeDecorator::ClearUpdatableValue() {
  const std::lock_guard<std::mutex> lock(m_mutexMetadata);
  m_UpdatableAppType.second.clear();
}

AppInfo* AppTypeDecorator::ExtractTargetAppType(const std::string& rTargetType, AppInfo** ppNext) {
  if (ppNext == nullptr) {
    return nullptr;
  }
  ORV_LOG_INFO("[Info] rTargetType : %s, first : %s", rTargetType.c_str(),
               m_AppliedAppType.first.c_str());
  if (rTargetType == m_AppliedAppType.first) {
    *ppNext = m_pAppInfo;
    m_pAppInfo = nullptr;
    return this;
  }
  // A match further inward writes into this layer's own link and so closes the chain.
  return m_pAppInfo->ExtractTargetAppType(rTargetType, &m_pAppInfo);
}

const std::string& AppTypeDecorator::GetAppType() const {
  return m_AppliedAppType.first;
}

// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "fake/control/packages.h"

/// The packages that the paths use.
namespace fault {

/// "orv_type/<type>" or "orv_data/<key>", and the value.
using Metadata = std::vector<std::pair<std::string, std::string>>;

/// A package with the UI application "<id>.App".
fake::Package MakePackage(const std::string& id, const Metadata& metadata);

/// Its data is in an image, and its URLs name files of the image.
fake::Package PackagedFeeder();
/// Its data is on the web.
fake::Package WebFeeder(const std::string& id);
/// With the service application "<id>.Feed".
fake::Package ServiceFeeder(const std::string& id, const std::string& value = "standard");
fake::Package Banner(const std::string& types = "info,channel");
fake::Package Guide(const std::string& screens = "channel_list,epg");
/// A guide that a replacement UI precedes.
fake::Package BridgedGuide(const std::string& screens = "channel_list,epg");

/// The web-app service's id of the UI application. Differs from every other id of the package.
std::string WidgetID(const fake::Package& package);

/// The package without its metadata.
fake::Package Ordinary(fake::Package package);

/// The package with this metadata added.
fake::Package With(fake::Package package, const Metadata& metadata);

}  // namespace fault

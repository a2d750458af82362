// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace desk {

/// What a package's image (*.tmg) contains, told by the magic numbers at its beginning.
enum class ImageKind { Squashfs, Ext, Iso, Zip, Unknown };

/// Unknown also for a file that cannot be read. Callable from any thread.
ImageKind KindOfImage(const std::string& image);

/// Copies one file from the root of the image to `target`, without mounting the image. False when
/// the image has no such file.
///
/// Squashfs images are read by `unsquashfs`, ext images by `debugfs`, ISO images by libarchive.
/// Blocks until the helper program has ended; at most 8 GiB are written. Throws PackageError when
/// the program is not installed, the image is damaged or its kind is Zip or Unknown. Callable from
/// any thread.
bool CopyFromImage(const std::string& image, const std::string& name, const std::string& target);

}  // namespace desk

// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <memory>

/// Owning pointers for the types of GLib and GIO.
namespace desk {

struct ObjectUnref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
struct VariantUnref {
  void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
struct ErrorFree {
  void operator()(GError* error) const { g_error_free(error); }
};
struct NodeInfoUnref {
  void operator()(GDBusNodeInfo* node) const { g_dbus_node_info_unref(node); }
};
struct MainLoopUnref {
  void operator()(GMainLoop* loop) const { g_main_loop_unref(loop); }
};
struct MemoryFree {
  void operator()(gpointer memory) const { g_free(memory); }
};

/// Any GObject: ObjectPtr<GDBusConnection>.
template <typename Object>
using ObjectPtr = std::unique_ptr<Object, ObjectUnref>;
/// A floating reference must be sunk first.
using VariantPtr = std::unique_ptr<GVariant, VariantUnref>;
using ErrorPtr = std::unique_ptr<GError, ErrorFree>;
using NodeInfoPtr = std::unique_ptr<GDBusNodeInfo, NodeInfoUnref>;
using MainLoopPtr = std::unique_ptr<GMainLoop, MainLoopUnref>;
/// Text that the caller frees with g_free().
using TextPtr = std::unique_ptr<gchar, MemoryFree>;

}  // namespace desk

// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "television_stand_in.h"

#include <gio/gio.h>

#include <cstdlib>
#include <stdexcept>

#include "desk/common/bus_names.h"
#include "desk/common/json.h"

namespace {

constexpr char INTERFACE_XML[] =
    "<node><interface name='org.tvdesk.Television1'><method name='Call'>"
    "<arg type='s' direction='in'/><arg type='ay' direction='in'/>"
    "<arg type='ay' direction='out'/></method></interface></node>";

GVariant* Bytes(const Json::Value& value) {
  const std::string text = desk::FormatJson(value);
  return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, text.data(), text.size(), 1);
}

void OnMethod(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
              GVariant* parameters, GDBusMethodInvocation* invocation, gpointer data) {
  static_cast<TelevisionStandIn*>(data)->Handle(parameters, invocation);
}

void Must(bool done, const char* what, GError* error) {
  if (!done) {
    throw std::runtime_error(std::string(what) + ": " + (error == nullptr ? "" : error->message));
  }
}

GDBusConnection* Connect(const std::string& address) {
  GError* error = nullptr;
  GDBusConnection* connection = g_dbus_connection_new_for_address_sync(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, &error);
  Must(connection != nullptr, "connect", error);
  return connection;
}

}  // namespace

TelevisionStandIn::TelevisionStandIn() : m_bus(g_test_dbus_new(G_TEST_DBUS_NONE)) {
  g_test_dbus_up(m_bus);
  const std::string address = g_test_dbus_get_bus_address(m_bus);
  setenv("TV_BUS", address.c_str(), 1);
  m_context = g_main_context_new();
  m_loop = g_main_loop_new(m_context, FALSE);
  m_thread = std::thread([this, address] { Serve(address); });
  std::unique_lock<std::mutex> lock(m_mutex);
  m_changed.wait(lock, [this] { return m_serving; });
}

TelevisionStandIn::~TelevisionStandIn() {
  QuitLoop();
  m_thread.join();
  if (!m_cutOff) {
    g_test_dbus_stop(m_bus);
  }
  g_object_unref(m_connection);
  g_main_loop_unref(m_loop);
  g_main_context_unref(m_context);
  g_object_unref(m_bus);
}

// From within the loop: g_main_loop_quit() has no effect before the loop runs.
void TelevisionStandIn::QuitLoop() {
  GSource* source = g_idle_source_new();
  g_source_set_callback(
      source,
      [](gpointer loop) -> gboolean {
        g_main_loop_quit(static_cast<GMainLoop*>(loop));
        return G_SOURCE_REMOVE;
      },
      m_loop, nullptr);
  g_source_attach(source, m_context);
  g_source_unref(source);
}

void TelevisionStandIn::On(const std::string& method, Answer answer) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_answers[method] = std::move(answer);
}

std::vector<Json::Value> TelevisionStandIn::Requests(const std::string& method) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<Json::Value> found;
  for (const auto& request : m_requests) {
    if (request.first == method) {
      found.push_back(request.second);
    }
  }
  return found;
}

void TelevisionStandIn::Emit(const std::string& topic, const Json::Value& body) {
  GError* error = nullptr;
  Must(g_dbus_connection_emit_signal(
           m_connection, nullptr, desk::BUS_PATH, desk::BUS_NAME, desk::BUS_EVENT,
           g_variant_new("(s@ay)", topic.c_str(), Bytes(body)), &error) == TRUE,
       "emit", error);
}

void TelevisionStandIn::CutOff() {
  m_cutOff = true;
  g_test_dbus_stop(m_bus);
}

void TelevisionStandIn::Handle(GVariant* parameters, GDBusMethodInvocation* invocation) {
  const gchar* method = nullptr;
  GVariant* bytes = nullptr;
  g_variant_get(parameters, "(&s@ay)", &method, &bytes);
  gsize size = 0;
  const void* text = g_variant_get_fixed_array(bytes, &size, 1);
  const Json::Value request = desk::ParseJson(std::string(static_cast<const char*>(text), size));
  g_variant_unref(bytes);
  Answer answer;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_requests.emplace_back(method, request);
    answer = m_answers.count(method) != 0 ? m_answers[method] : nullptr;
  }
  try {
    const Json::Value reply = answer == nullptr ? Json::Value(Json::objectValue) : answer(request);
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(@ay)", Bytes(reply)));
  } catch (const std::exception& e) {
    g_dbus_method_invocation_return_dbus_error(invocation, "org.tvdesk.Error.Failed", e.what());
  }
}

void TelevisionStandIn::Serve(const std::string& address) {
  g_main_context_push_thread_default(m_context);
  m_connection = Connect(address);
  g_dbus_connection_set_exit_on_close(m_connection, FALSE);
  GError* error = nullptr;
  GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(INTERFACE_XML, &error);
  Must(node != nullptr, "interface", error);
  const GDBusInterfaceVTable table = {OnMethod, nullptr, nullptr, {}};
  Must(g_dbus_connection_register_object(m_connection, desk::BUS_PATH, node->interfaces[0], &table,
                                         this, nullptr, &error) != 0,
       "object", error);
  g_dbus_node_info_unref(node);
  GVariant* reply = g_dbus_connection_call_sync(
      m_connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "RequestName", g_variant_new("(su)", desk::BUS_NAME, 4U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
      nullptr, &error);
  Must(reply != nullptr, "name", error);
  g_variant_unref(reply);
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_serving = true;
  }
  m_changed.notify_all();
  g_main_loop_run(m_loop);
  g_main_context_pop_thread_default(m_context);
}

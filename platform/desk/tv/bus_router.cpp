// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/bus_router.h"

#include <atomic>
#include <map>
#include <utility>
#include <vector>

#include "desk/common/bus_names.h"
#include "desk/common/desk_error.h"
#include "desk/common/gio_ptr.h"
#include "desk/common/json.h"

namespace desk::tv {
namespace {

constexpr const char* INTERFACE =
    "<node><interface name='org.tvdesk.Television1'>"
    "<method name='Call'><arg type='s' name='method' direction='in'/>"
    "<arg type='ay' name='request' direction='in'/>"
    "<arg type='ay' name='reply' direction='out'/></method>"
    "<signal name='Event'><arg type='s' name='topic'/><arg type='ay' name='body'/></signal>"
    "</interface></node>";

constexpr guint32 NAME_DO_NOT_QUEUE = 4;
constexpr guint32 NAME_IS_OURS = 1;

GVariant* Bytes(const Json::Value& value) {
  const std::string text = FormatJson(value);
  return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, text.data(), text.size(), 1);
}

std::string Text(GVariant* array) {
  gsize size = 0;
  const void* bytes = g_variant_get_fixed_array(array, &size, 1);
  return std::string(static_cast<const char*>(bytes), size);
}

DeskError Take(GError* error) {
  const ErrorPtr owner(error);
  return DeskError(DeskError::FAILED, std::string("the private bus: ") + error->message);
}

GDBusConnection* Connect(const std::string& address) {
  GError* error = nullptr;
  GDBusConnection* bus = g_dbus_connection_new_for_address_sync(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, &error);
  if (bus == nullptr) {
    throw Take(error);
  }
  return bus;
}

// Calls a method of the bus itself, which replies at once.
VariantPtr AskBus(GDBusConnection* bus, const char* method, GVariant* arguments) {
  GError* error = nullptr;
  GVariant* reply = g_dbus_connection_call_sync(
      bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
      arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
  if (reply == nullptr) {
    throw Take(error);
  }
  return VariantPtr(reply);
}

guint32 AskBusForNumber(GDBusConnection* bus, const char* method, GVariant* arguments) {
  const VariantPtr reply = AskBus(bus, method, arguments);
  guint32 number = 0;
  g_variant_get(reply.get(), "(u)", &number);
  return number;
}

// GDBus accepts a reply from any thread, and keeps its order among the events that are sent before
// and after it.
class BusReply : public Reply {
 public:
  explicit BusReply(GDBusMethodInvocation* invocation) : m_invocation(invocation) {}
  ~BusReply() override { Answer(DeskError::FAILED, "the TV dropped the call without a reply"); }

  void Return(const Json::Value& value) override {
    GDBusMethodInvocation* invocation = m_invocation.exchange(nullptr);
    if (invocation != nullptr) {
      const Json::Value reply = value.isNull() ? Json::Value(Json::objectValue) : value;
      g_dbus_method_invocation_return_value(invocation, g_variant_new("(@ay)", Bytes(reply)));
    }
  }

  void Fail(const std::string& code, const std::string& message) override { Answer(code, message); }

 private:
  void Answer(const std::string& code, const std::string& message) {
    GDBusMethodInvocation* invocation = m_invocation.exchange(nullptr);
    if (invocation == nullptr) {
      return;
    }
    // D-Bus requires UTF-8 in error messages.
    const TextPtr valid(g_utf8_make_valid(message.c_str(), static_cast<gssize>(message.size())));
    g_dbus_method_invocation_return_dbus_error(invocation, (BUS_ERROR_PREFIX + code).c_str(),
                                               valid.get());
  }

  std::atomic<GDBusMethodInvocation*> m_invocation;
};

}  // namespace

struct BusRouter::State {
  State(const std::string& address, const CallerTable& table)
      : callers(table), bus(Connect(address)) {}

  void Export();
  void WatchConnections();
  void OnCall(const char* sender, GVariant* arguments, GDBusMethodInvocation* invocation);
  void Run(const std::string& method, const Json::Value& request, const Caller& caller,
           const std::shared_ptr<Reply>& reply);
  Caller CallerOf(const std::string& busName);
  void OnGone(const std::string& busName);
  void Send(const char* destination, const std::string& topic, const Json::Value& body);

  const CallerTable& callers;
  const ObjectPtr<GDBusConnection> bus;
  guint object = 0;
  guint connections = 0;
  std::map<std::string, DeferredHandler> methods;
  std::vector<std::function<void(const std::string&)>> goneFunctions;
  std::map<std::string, Caller> known;  // a connection keeps its owner
};

void BusRouter::State::Export() {
  static const GDBusInterfaceVTable table = {
      [](GDBusConnection*, const gchar* sender, const gchar*, const gchar*, const gchar*,
         GVariant* arguments, GDBusMethodInvocation* invocation,
         gpointer data) { static_cast<State*>(data)->OnCall(sender, arguments, invocation); },
      nullptr,
      nullptr,
      {}};
  GError* error = nullptr;
  const NodeInfoPtr node(g_dbus_node_info_new_for_xml(INTERFACE, &error));
  if (node == nullptr) {
    throw Take(error);
  }
  object = g_dbus_connection_register_object(bus.get(), BUS_PATH, node->interfaces[0], &table, this,
                                             nullptr, &error);
  if (object == 0) {
    throw Take(error);
  }
}

void BusRouter::State::WatchConnections() {
  connections = g_dbus_connection_signal_subscribe(
      bus.get(), "org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged",
      "/org/freedesktop/DBus", nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
         GVariant* arguments, gpointer data) {
        const gchar* name = nullptr;
        const gchar* owner = nullptr;
        g_variant_get(arguments, "(&s&s&s)", &name, nullptr, &owner);
        if (name[0] == ':' && owner[0] == '\0') {
          static_cast<State*>(data)->OnGone(name);
        }
      },
      this, nullptr);
}

// The outermost frame of every call: exceptions of the TV's parts are caught here.
void BusRouter::State::OnCall(const char* sender, GVariant* arguments,
                              GDBusMethodInvocation* invocation) {
  const auto reply = std::make_shared<BusReply>(invocation);
  try {
    const gchar* method = nullptr;
    GVariant* bytes = nullptr;
    g_variant_get(arguments, "(&s@ay)", &method, &bytes);
    const VariantPtr owner(bytes);
    Run(method, ParseJson(Text(bytes)), CallerOf(sender), reply);
  } catch (const DeskError& e) {
    reply->Fail(e.Code(), e.what());
  } catch (const std::exception& e) {
    reply->Fail(DeskError::FAILED, e.what());
  }
}

void BusRouter::State::Run(const std::string& method, const Json::Value& request,
                           const Caller& caller, const std::shared_ptr<Reply>& reply) {
  const auto found = methods.find(method);
  if (found == methods.end()) {
    throw DeskError(DeskError::NO_SUCH_METHOD, "the TV has no method " + method);
  }
  if (!request.isObject()) {
    throw DeskError(DeskError::USAGE, "the request must be a JSON object");
  }
  found->second(request, caller, reply);
}

Caller BusRouter::State::CallerOf(const std::string& busName) {
  const auto found = known.find(busName);
  if (found != known.end()) {
    return found->second;
  }
  Caller caller;
  try {
    caller = callers.Identify(static_cast<pid_t>(AskBusForNumber(
        bus.get(), "GetConnectionUnixProcessID", g_variant_new("(s)", busName.c_str()))));
  } catch (const DeskError&) {
    // The connection was closed after its call, so its owner is unknown. It counts as an
    // operator's, which cannot act as an app. It is not remembered: its end was already reported.
    caller.busName = busName;
    return caller;
  }
  caller.busName = busName;
  known[busName] = caller;
  return caller;
}

void BusRouter::State::OnGone(const std::string& busName) {
  known.erase(busName);
  for (const auto& function : goneFunctions) {
    try {
      function(busName);
    } catch (const std::exception& e) {
      g_warning("at the end of the connection %s: %s", busName.c_str(), e.what());
    }
  }
}

void BusRouter::State::Send(const char* destination, const std::string& topic,
                            const Json::Value& body) {
  g_dbus_connection_emit_signal(bus.get(), destination, BUS_PATH, BUS_NAME, BUS_EVENT,
                                g_variant_new("(s@ay)", topic.c_str(), Bytes(body)), nullptr);
}

BusRouter::BusRouter(const std::string& address, const CallerTable& callers)
    : m_state(std::make_unique<State>(address, callers)) {
  m_state->Export();
  m_state->WatchConnections();
  if (AskBusForNumber(m_state->bus.get(), "RequestName",
                      g_variant_new("(su)", BUS_NAME, NAME_DO_NOT_QUEUE)) != NAME_IS_OURS) {
    throw DeskError(DeskError::FAILED,
                    "another desk-tv already owns " + std::string(BUS_NAME) + " on this bus");
  }
}

BusRouter::~BusRouter() {
  GDBusConnection* bus = m_state->bus.get();
  g_dbus_connection_signal_unsubscribe(bus, m_state->connections);
  g_dbus_connection_unregister_object(bus, m_state->object);
  g_dbus_connection_close_sync(bus, nullptr, nullptr);
}

void BusRouter::Add(const std::string& method, Handler handler) {
  AddDeferred(method,
              [handler = std::move(handler)](const Json::Value& request, const Caller& caller,
                                             const std::shared_ptr<Reply>& reply) {
                reply->Return(handler(request, caller));
              });
}

void BusRouter::AddDeferred(const std::string& method, DeferredHandler handler) {
  m_state->methods[method] = std::move(handler);
}

void BusRouter::Emit(const std::string& topic, const Json::Value& body) {
  m_state->Send(nullptr, topic, body);
}

void BusRouter::EmitTo(const std::string& busName, const std::string& topic,
                       const Json::Value& body) {
  m_state->Send(busName.c_str(), topic, body);
}

void BusRouter::OnConnectionGone(std::function<void(const std::string& busName)> function) {
  m_state->goneFunctions.push_back(std::move(function));
}

void BusRouter::Flush() {
  // The bus handles the messages of a connection in order, so the reply comes after all of them.
  AskBus(m_state->bus.get(), "GetId", nullptr);
}

}  // namespace desk::tv

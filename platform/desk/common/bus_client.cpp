// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/bus_client.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <fstream>
#include <map>
#include <mutex>

#include "desk/common/bus_names.h"
#include "desk/common/desk_error.h"
#include "desk/common/desk_root.h"
#include "desk/common/gio_ptr.h"
#include "desk/common/json.h"

namespace desk {
namespace {

struct Subscription {
  Subscription(std::string topicText, BusClient::EventFunction eventFunction, GMainContext* ctx)
      : topic(std::move(topicText)),
        function(std::move(eventFunction)),
        context(g_main_context_ref(ctx == nullptr ? g_main_context_default() : ctx)) {}
  ~Subscription() { g_main_context_unref(context); }
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;

  const std::string topic;
  const BusClient::EventFunction function;
  GMainContext* const context;
  std::atomic<bool> alive{true};
};

// One event on its way to one subscriber; owned by the source that carries it.
struct Delivery {
  std::shared_ptr<Subscription> subscription;
  std::shared_ptr<const Json::Value> body;
};

gboolean Deliver(gpointer data) {
  const auto* delivery = static_cast<Delivery*>(data);
  if (delivery->subscription->alive.load()) {
    delivery->subscription->function(*delivery->body);
  }
  return G_SOURCE_REMOVE;
}

// Sources of one priority run in the order in which they were attached.
void Post(const std::shared_ptr<Subscription>& subscription,
          const std::shared_ptr<const Json::Value>& body) {
  GSource* source = g_idle_source_new();
  g_source_set_priority(source, G_PRIORITY_DEFAULT);
  g_source_set_callback(source, Deliver, new Delivery{subscription, body},
                        [](gpointer data) { delete static_cast<Delivery*>(data); });
  g_source_attach(source, subscription->context);
  g_source_unref(source);
}

std::string BytesOf(GVariant* array) {
  gsize size = 0;
  const void* bytes = g_variant_get_fixed_array(array, &size, 1);
  return std::string(static_cast<const char*>(bytes), size);
}

GVariant* BytesVariant(const std::string& text) {
  return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, text.data(), text.size(), 1);
}

GVariant* CallVariant(const std::string& method, const Json::Value& request) {
  return g_variant_new("(s@ay)", method.c_str(),
                       BytesVariant(request.isNull() ? "{}" : FormatJson(request)));
}

DeskError Gone(const std::string& why) {
  return DeskError(DeskError::NO_TV, "no TV answers (" + why + "): start one with tv up");
}

DeskError FromRemote(GError* error) {
  gchar* name = g_dbus_error_get_remote_error(error);
  const std::string remote = name == nullptr ? "" : name;
  g_free(name);
  g_dbus_error_strip_remote_error(error);
  const std::string prefix = BUS_ERROR_PREFIX;
  if (remote.compare(0, prefix.size(), prefix) != 0) {
    return Gone(error->message);
  }
  return DeskError(remote.substr(prefix.size()), error->message);
}

}  // namespace

struct BusClient::State {
  explicit State(GDBusConnection* bus) : connection(bus) {}

  // On the bus library's thread.
  void Dispatch(const std::string& topic, const std::shared_ptr<const Json::Value>& body) {
    const std::lock_guard<std::mutex> lock(mutex);
    for (const auto& entry : subscriptions) {
      if (entry.second->topic == topic) {
        Post(entry.second, body);
      }
    }
  }

  const ObjectPtr<GDBusConnection> connection;
  guint filter = 0;
  gulong closedHandler = 0;

  std::mutex mutex;  // guards the following members
  std::map<int, std::shared_ptr<Subscription>> subscriptions;
  int lastId = 0;
};

namespace {

struct Event {
  std::string topic;
  std::shared_ptr<const Json::Value> body;
};

bool IsEvent(GDBusMessage* message) {
  return g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_SIGNAL &&
         g_strcmp0(g_dbus_message_get_interface(message), BUS_NAME) == 0 &&
         g_strcmp0(g_dbus_message_get_member(message), BUS_EVENT) == 0 &&
         g_strcmp0(g_dbus_message_get_signature(message), "say") == 0;
}

Event ReadEvent(GDBusMessage* message) {
  GVariant* whole = g_dbus_message_get_body(message);
  const gchar* topic = nullptr;
  GVariant* bytes = nullptr;
  g_variant_get(whole, "(&s@ay)", &topic, &bytes);
  const VariantPtr owner(bytes);
  return {topic, std::make_shared<const Json::Value>(ParseJson(BytesOf(bytes)))};
}

}  // namespace

BusClient::BusClient(const std::string& address) {
  GError* error = nullptr;
  GDBusConnection* connection = g_dbus_connection_new_for_address_sync(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, &error);
  if (connection == nullptr) {
    const ErrorPtr owner(error);
    throw Gone(error->message);
  }
  m_state = std::make_shared<State>(connection);
  // The filter holds the state itself: it may still run while the client is destroyed.
  auto* state = new std::weak_ptr<State>(m_state);
  m_state->filter = g_dbus_connection_add_filter(
      connection,
      [](GDBusConnection*, GDBusMessage* message, gboolean incoming,
         gpointer data) -> GDBusMessage* {
        if (incoming == FALSE || !IsEvent(message)) {
          return message;
        }
        const auto target = static_cast<std::weak_ptr<State>*>(data)->lock();
        if (target != nullptr) {
          try {
            const Event event = ReadEvent(message);
            target->Dispatch(event.topic, event.body);
          } catch (const std::exception& e) {
            g_warning("an event of the TV was dropped: %s", e.what());
          }
        }
        g_object_unref(message);
        return nullptr;
      },
      state, [](gpointer data) { delete static_cast<std::weak_ptr<State>*>(data); });
}

BusClient::~BusClient() {
  {
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    for (const auto& entry : m_state->subscriptions) {
      entry.second->alive.store(false);
    }
  }
  GDBusConnection* connection = m_state->connection.get();
  if (m_state->closedHandler != 0) {
    g_signal_handler_disconnect(connection, m_state->closedHandler);
  }
  g_dbus_connection_remove_filter(connection, m_state->filter);
  g_dbus_connection_close_sync(connection, nullptr, nullptr);
}

namespace {

// A TV of another user answers nobody else, and its files may not be readable either.
void RefuseForeignTv(const DeskPaths& paths) {
  const std::string owner = ForeignOwner(paths.Run());
  if (!owner.empty()) {
    throw DeskError(DeskError::FAILED, "the TV in " + paths.Root() + " belongs to " + owner +
                                           ": run tv as that user, or choose another TV with "
                                           "--root");
  }
}

}  // namespace

std::unique_ptr<BusClient> BusClient::Open(const DeskPaths& paths) {
  std::ifstream file(paths.Address());
  std::string address;
  if (!std::getline(file, address) || address.empty()) {
    if (access(paths.Address().c_str(), R_OK) != 0 && errno == EACCES) {
      RefuseForeignTv(paths);
    }
    throw Gone("none is running in " + paths.Root());
  }
  try {
    return std::make_unique<BusClient>(address);
  } catch (const DeskError&) {
    RefuseForeignTv(paths);
    throw;
  }
}

Json::Value BusClient::Call(const std::string& method, const Json::Value& request) {
  GError* error = nullptr;
  GVariant* reply =
      g_dbus_connection_call_sync(m_state->connection.get(), BUS_NAME, BUS_PATH, BUS_NAME, BUS_CALL,
                                  CallVariant(method, request), G_VARIANT_TYPE("(ay)"),
                                  G_DBUS_CALL_FLAGS_NO_AUTO_START, G_MAXINT, nullptr, &error);
  if (reply == nullptr) {
    const ErrorPtr owner(error);
    throw FromRemote(error);
  }
  const VariantPtr owner(reply);
  const VariantPtr bytes(g_variant_get_child_value(reply, 0));
  return ParseJson(BytesOf(bytes.get()));
}

Json::Value BusClient::Call(const std::string& method) {
  return Call(method, Json::Value(Json::objectValue));
}

void BusClient::Tell(const std::string& method, const Json::Value& request) {
  const ObjectPtr<GDBusMessage> message(
      g_dbus_message_new_method_call(BUS_NAME, BUS_PATH, BUS_NAME, BUS_CALL));
  g_dbus_message_set_flags(message.get(),
                           static_cast<GDBusMessageFlags>(G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED |
                                                          G_DBUS_MESSAGE_FLAGS_NO_AUTO_START));
  g_dbus_message_set_body(message.get(), CallVariant(method, request));
  GError* error = nullptr;
  if (g_dbus_connection_send_message(m_state->connection.get(), message.get(),
                                     G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, &error) == FALSE) {
    const ErrorPtr owner(error);
    throw Gone(error->message);
  }
}

int BusClient::Subscribe(const std::string& topic, EventFunction function, GMainContext* context) {
  int id = 0;
  {
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    id = ++m_state->lastId;
    m_state->subscriptions[id] =
        std::make_shared<Subscription>(topic, std::move(function), context);
  }
  // Match rules are never removed; duplicates are harmless: an event still arrives once. Unicast
  // events need no match.
  const std::string rule = std::string("type='signal',sender='") + BUS_NAME + "',interface='" +
                           BUS_NAME + "',member='" + BUS_EVENT + "',arg0='" + topic + "'";
  GError* error = nullptr;
  GVariant* reply = g_dbus_connection_call_sync(
      m_state->connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
      "org.freedesktop.DBus", "AddMatch", g_variant_new("(s)", rule.c_str()), nullptr,
      G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, &error);
  const VariantPtr owner(reply);
  if (reply == nullptr) {
    const ErrorPtr errorOwner(error);
    Unsubscribe(id);
    throw Gone(error->message);
  }
  return id;
}

void BusClient::Unsubscribe(int id) {
  const std::lock_guard<std::mutex> lock(m_state->mutex);
  const auto found = m_state->subscriptions.find(id);
  if (found == m_state->subscriptions.end()) {
    return;
  }
  found->second->alive.store(false);
  m_state->subscriptions.erase(found);
}

void BusClient::OnClosed(std::function<void()> function) {
  m_state->closedHandler = g_signal_connect_data(
      m_state->connection.get(), "closed",
      G_CALLBACK(+[](GDBusConnection*, gboolean, GError*, gpointer data) {
        (*static_cast<std::function<void()>*>(data))();
      }),
      new std::function<void()>(std::move(function)),
      [](gpointer data, GClosure*) { delete static_cast<std::function<void()>*>(data); },
      static_cast<GConnectFlags>(0));
}

}  // namespace desk

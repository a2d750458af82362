// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <bundle.h>
#include <message_port.h>

#include "contract_test.h"

namespace contract {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* PORT = "contract_port";

/// "key type size value"; an array has no value.
void NoteEntry(const char* key, const int type, const bundle_keyval_t* kv, void*) {
  void* value = nullptr;
  std::size_t size = 0;
  std::string note = std::string(key) + " " + std::to_string(type);
  if ((type & BUNDLE_TYPE_ARRAY) == 0 &&
      bundle_keyval_get_basic_val(const_cast<bundle_keyval_t*>(kv), &value, &size) == 0) {
    const std::size_t length = type == BUNDLE_TYPE_STR ? size - 1 : size;
    note += " " + std::to_string(size) + " " + std::string(static_cast<char*>(value), length);
  }
  Notes::Add(note);
}

class Bundle : public Contract {
 protected:
  ~Bundle() override { EXPECT_EQ(0, bundle_free(m_bundle)); }

  bundle* m_bundle = bundle_create();
};

TEST_F(Bundle, KeepsTheOrderOfItsEntries) {
  EXPECT_EQ(0, bundle_add_str(m_bundle, "z", "1"));
  EXPECT_EQ(0, bundle_add_str(m_bundle, "a", "22"));
  EXPECT_EQ(0, bundle_add_str(m_bundle, "m", ""));
  bundle_foreach(m_bundle, NoteEntry, nullptr);
  EXPECT_THAT(Notes::All(), ElementsAre("z 1025 2 1", "a 1025 3 22", "m 1025 1 "));
}

TEST_F(Bundle, KeepsTheOldValueOfAKeyThatIsTaken) {
  EXPECT_EQ(0, bundle_add_str(m_bundle, "k", "old"));
  EXPECT_NE(0, bundle_add_str(m_bundle, "k", "new"));
  bundle_foreach(m_bundle, NoteEntry, nullptr);
  EXPECT_THAT(Notes::All(), ElementsAre("k 1025 4 old"));
}

TEST_F(Bundle, CopiesItsTexts) {
  std::string key = "key";
  std::string value = "value";
  EXPECT_EQ(0, bundle_add_str(m_bundle, key.c_str(), value.c_str()));
  key = "xxx";
  value = "xxxxx";
  bundle_foreach(m_bundle, NoteEntry, nullptr);
  EXPECT_THAT(Notes::All(), ElementsAre("key 1025 6 value"));
}

TEST_F(Bundle, RefusesNull) {
  EXPECT_NE(0, bundle_add_str(m_bundle, nullptr, "x"));
  EXPECT_NE(0, bundle_add_str(m_bundle, "x", nullptr));
  EXPECT_NE(0, bundle_add_str(nullptr, "x", "x"));
  bundle_foreach(m_bundle, NoteEntry, nullptr);
  EXPECT_THAT(Notes::All(), IsEmpty());
}

TEST_F(Bundle, TellsOtherTypesFromStrings) {
  const char* texts[] = {"a", "b"};
  EXPECT_EQ(0, bundle_add_byte(m_bundle, "bytes", "x\0y", 3));
  EXPECT_EQ(0, bundle_add_str_array(m_bundle, "texts", texts, 2));
  bundle_foreach(m_bundle, NoteEntry, nullptr);
  EXPECT_THAT(Notes::All(),
              ElementsAre("bytes 2 3 " + std::string("x\0y", 3),
                          "texts " + std::to_string(static_cast<int>(BUNDLE_TYPE_STR_ARRAY))));
}

void NoteMessage(int, const char* app, const char* port, bool, bundle* message, void* data) {
  Notes::Add((data == nullptr ? "" : static_cast<const char*>(data)) + std::string(app) + " " +
             (port == nullptr ? "no port" : port));
  bundle_foreach(message, NoteEntry, nullptr);
}

void Answer(int, const char* app, const char* port, bool, bundle*, void*) {
  bundle* reply = bundle_create();
  bundle_add_str(reply, "answer", "yes");
  Notes::Add(std::to_string(message_port_send_message(app, port, reply)));
  bundle_free(reply);
}

class MessagePort : public Contract {};

TEST_F(MessagePort, HasAPositiveIDThatStaysWhenRegisteredAgain) {
  const int id = message_port_register_local_port(PORT, NoteMessage, nullptr);
  EXPECT_GT(id, 0);
  EXPECT_EQ(id, message_port_register_local_port(PORT, Answer, nullptr));
  const int other = message_port_register_local_port("contract_port_2", Answer, nullptr);
  EXPECT_GT(other, 0);
  EXPECT_NE(id, other);
}

TEST_F(MessagePort, RefusesNullAtRegistration) {
  EXPECT_EQ(MESSAGE_PORT_ERROR_INVALID_PARAMETER,
            message_port_register_local_port(nullptr, NoteMessage, nullptr));
  EXPECT_EQ(MESSAGE_PORT_ERROR_INVALID_PARAMETER,
            message_port_register_local_port(PORT, nullptr, nullptr));
}

TEST_F(MessagePort, DeliversWithTheSendersAppAndReplyPort) {
  message_port_register_local_port(PORT, NoteMessage, nullptr);
  Tv().SendMessage("org.sender.app", PORT, {{"k", Entry::Kind::String, {"v"}}}, "reply");
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 2; }));
  EXPECT_THAT(Notes::All(), ElementsAre("org.sender.app reply", "k 1025 2 v"));
}

TEST_F(MessagePort, GivesNoPortWhenTheSenderNamedNone) {
  message_port_register_local_port(PORT, NoteMessage, nullptr);
  Tv().SendMessage("org.sender.app", PORT, {}, std::nullopt);
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 1; }));
  EXPECT_THAT(Notes::All(), ElementsAre("org.sender.app no port"));
}

TEST_F(MessagePort, DeliversInOrderAndNotBeforeTheMainLoopRuns) {
  message_port_register_local_port(PORT, NoteMessage, nullptr);
  for (const char* app : {"org.a", "org.b", "org.c"}) {
    Tv().SendMessage(app, PORT, {}, std::nullopt);
  }
  EXPECT_THAT(Notes::All(), IsEmpty());
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 3; }));
  EXPECT_THAT(Notes::All(), ElementsAre("org.a no port", "org.b no port", "org.c no port"));
}

TEST_F(MessagePort, DeliversToTheLastCallbackAndUserData) {
  char data[] = "last ";
  message_port_register_local_port(PORT, Answer, nullptr);
  message_port_register_local_port(PORT, NoteMessage, data);
  Tv().SendMessage("org.sender.app", PORT, {}, std::nullopt);
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 1; }));
  EXPECT_THAT(Notes::All(), ElementsAre("last org.sender.app no port"));
}

TEST_F(MessagePort, KeepsTypesThatAreNoStrings) {
  message_port_register_local_port(PORT, NoteMessage, nullptr);
  Tv().SendMessage("org.sender.app", PORT,
                   {{"bytes", Entry::Kind::Bytes, {"xyz"}},
                    {"texts", Entry::Kind::Strings, {"a", "b"}},
                    {"text", Entry::Kind::String, {"t"}}},
                   std::nullopt);
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 4; }));
  EXPECT_THAT(Notes::All(),
              ElementsAre("org.sender.app no port", "bytes 2 3 xyz",
                          "texts " + std::to_string(static_cast<int>(BUNDLE_TYPE_STR_ARRAY)),
                          "text 1025 2 t"));
}

TEST_F(MessagePort, BringsAnAnswerToTheReplyPort) {
  message_port_register_local_port(PORT, Answer, nullptr);
  Tv().SendMessage("org.sender.app", PORT, {}, "reply");
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 1; }));
  EXPECT_THAT(Notes::All(), ElementsAre("0"));
  EXPECT_TRUE(Tv().RunMainLoopUntil(
      [this] { return Tv().Received("org.sender.app", "reply").size() == 1; }));
  EXPECT_THAT(Tv().Received("org.sender.app", "reply"),
              ElementsAre(ElementsAre(Pair("answer", "yes"))));
}

TEST_F(MessagePort, AnAnswerToNoPortIsRefused) {
  message_port_register_local_port(PORT, Answer, nullptr);
  Tv().SendMessage("org.sender.app", PORT, {}, std::nullopt);
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 1; }));
  EXPECT_THAT(Notes::All(),
              ElementsAre(std::to_string(static_cast<int>(MESSAGE_PORT_ERROR_INVALID_PARAMETER))));
}

TEST_F(MessagePort, SendingToAPortThatNobodyRegisteredIsAnError) {
  bundle* message = bundle_create();
  EXPECT_EQ(MESSAGE_PORT_ERROR_PORT_NOT_FOUND,
            message_port_send_message("org.nobody", "port", message));
  EXPECT_EQ(0, bundle_free(message));
}

TEST_F(MessagePort, SendingRefusesNull) {
  bundle* message = bundle_create();
  EXPECT_EQ(MESSAGE_PORT_ERROR_INVALID_PARAMETER,
            message_port_send_message(nullptr, "port", message));
  EXPECT_EQ(MESSAGE_PORT_ERROR_INVALID_PARAMETER,
            message_port_send_message("org.nobody", nullptr, message));
  EXPECT_EQ(MESSAGE_PORT_ERROR_INVALID_PARAMETER,
            message_port_send_message("org.nobody", "port", nullptr));
  EXPECT_EQ(0, bundle_free(message));
}

}  // namespace
}  // namespace contract

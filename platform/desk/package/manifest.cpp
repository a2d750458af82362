// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/package/manifest.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>

namespace desk {
namespace {

constexpr char WIDGETS[] = "http://www.w3.org/ns/widgets";
constexpr char TIZEN[] = "http://tizen.org/ns/widgets";
constexpr std::size_t MAX_ID_LENGTH = 255;

struct DocDeleter {
  void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
};
using Doc = std::unique_ptr<xmlDoc, DocDeleter>;

struct ContextDeleter {
  void operator()(xmlParserCtxt* context) const {
    if (context->myDoc != nullptr) {
      xmlFreeDoc(context->myDoc);
    }
    xmlFreeParserCtxt(context);
  }
};
using Context = std::unique_ptr<xmlParserCtxt, ContextDeleter>;

std::string Text(const xmlChar* text) {
  return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

bool Is(const xmlNode* node, const char* uri, const char* name) {
  return node->type == XML_ELEMENT_NODE && node->ns != nullptr && Text(node->ns->href) == uri &&
         Text(node->name) == name;
}

std::string Attribute(const xmlNode* node, const char* name) {
  xmlChar* value = xmlGetNoNsProp(node, reinterpret_cast<const xmlChar*>(name));
  std::string text = Text(value);
  xmlFree(value);
  return text;
}

std::string Content(const xmlNode* node) {
  xmlChar* value = xmlNodeGetContent(node);
  std::string text = Text(value);
  xmlFree(value);
  return text;
}

std::string Trim(const std::string& text) {
  const char* blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

void StopAtDoctype(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  auto* parser = static_cast<xmlParserCtxt*>(context);
  *static_cast<bool*>(parser->_private) = true;
  xmlStopParser(parser);
}

std::string ErrorOf(xmlParserCtxt* context) {
  const xmlError* error = xmlCtxtGetLastError(context);
  if (error == nullptr || error->message == nullptr) {
    return "config.xml is not well-formed";
  }
  return "config.xml is not well-formed: line " + std::to_string(error->line) + ": " +
         Trim(error->message);
}

Doc Parse(const std::string& xml) {
  if (xml.find('\0') != std::string::npos) {
    throw PackageError("config.xml is not well-formed: it holds a NUL byte");
  }
  Context context(xmlCreateMemoryParserCtxt(xml.data(), static_cast<int>(xml.size())));
  if (context == nullptr) {
    throw PackageError("config.xml is empty");
  }
  bool doctype = false;
  context->_private = &doctype;
  context->sax->internalSubset = StopAtDoctype;
  xmlCtxtUseOptions(context.get(), XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  const int result = xmlParseDocument(context.get());
  if (doctype) {
    throw PackageError("config.xml has a document type declaration; take it out");
  }
  if (result != 0 || context->wellFormed == 0) {
    throw PackageError(ErrorOf(context.get()));
  }
  Doc doc(context->myDoc);
  context->myDoc = nullptr;
  return doc;
}

void CheckAppId(const std::string& id, const std::string& package) {
  const bool plain = std::all_of(id.begin(), id.end(), [](unsigned char c) {
    return std::isalnum(c) != 0 || c == '_' || c == '-' || c == '.';
  });
  if (id.empty()) {
    throw PackageError("config.xml names an application without an id");
  }
  if (!plain || id.size() > MAX_ID_LENGTH) {
    throw PackageError("config.xml: the application id \"" + id +
                       "\" may hold only letters, digits, \".\", \"_\" and \"-\"");
  }
  if (PackageOfApp(id) != package || id.size() < package.size() + 2) {
    throw PackageError("config.xml: the application id \"" + id + "\" must be \"" + package +
                       ".\" and a name");
  }
}

/// A remote page is kept as it is; a leading slash means the package's root.
std::string CleanStartPage(const std::string& page) {
  if (IsRemotePage(page)) {
    return page;
  }
  const std::size_t start = page.find_first_not_of('/');
  return CleanRelativeName(start == std::string::npos ? "" : page.substr(start));
}

class ManifestReader {
 public:
  explicit ManifestReader(const xmlNode* root) : m_root(root) {}

  PackageManifest Read() {
    m_manifest.version = Trim(Attribute(m_root, "version"));
    for (const xmlNode* node = m_root->children; node != nullptr; node = node->next) {
      ReadChild(node);
    }
    SharePackageMetadata();
    Check();
    return std::move(m_manifest);
  }

 private:
  void ReadChild(const xmlNode* node) {
    if (Is(node, TIZEN, "application")) {
      ReadApplication(node);
    } else if (Is(node, TIZEN, "service")) {
      ReadService(node);
    } else if (Is(node, TIZEN, "metadata")) {
      m_shared.push_back(ReadMetadata(node));
    } else if (Is(node, WIDGETS, "name") && m_manifest.label.empty()) {
      m_manifest.label = Trim(Content(node));
    } else if (Is(node, WIDGETS, "content")) {
      m_startPage = Attribute(node, "src");
    }
  }

  void ReadApplication(const xmlNode* node) {
    TakePackageId(Attribute(node, "package"));
    PackageApp app;
    app.id = Attribute(node, "id");
    app.metadata = MetadataIn(node);
    m_manifest.apps.push_back(std::move(app));
  }

  void ReadService(const xmlNode* node) {
    PackageApp app;
    app.id = Attribute(node, "id");
    app.component = Component::Service;
    app.metadata = MetadataIn(node);
    for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
      if (Is(child, TIZEN, "content")) {
        app.program = Attribute(child, "src");
      }
    }
    if (app.program.empty()) {
      throw PackageError("config.xml: the service \"" + app.id +
                         "\" has no tizen:content with a src");
    }
    app.program = CleanRelativeName(app.program);
    m_manifest.apps.push_back(std::move(app));
  }

  void TakePackageId(const std::string& id) {
    if (id.empty()) {
      return;
    }
    if (!m_manifest.id.empty() && m_manifest.id != id) {
      throw PackageError("config.xml names two packages, \"" + m_manifest.id + "\" and \"" + id +
                         "\"");
    }
    m_manifest.id = id;
  }

  static Metadata ReadMetadata(const xmlNode* node) {
    Metadata entry{Attribute(node, "key"), Attribute(node, "value")};
    if (entry.key.empty()) {
      throw PackageError("config.xml: line " + std::to_string(xmlGetLineNo(node)) +
                         ": a tizen:metadata has no key");
    }
    return entry;
  }

  static std::vector<Metadata> MetadataIn(const xmlNode* node) {
    std::vector<Metadata> entries;
    for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
      if (Is(child, TIZEN, "metadata")) {
        entries.push_back(ReadMetadata(child));
      }
    }
    return entries;
  }

  void SharePackageMetadata() {
    const auto& apps = m_manifest.apps;
    const bool hasUi = std::any_of(apps.begin(), apps.end(), [](const PackageApp& app) {
      return app.component == Component::Ui;
    });
    for (PackageApp& app : m_manifest.apps) {
      if (app.component == Component::Ui || !hasUi) {
        app.metadata.insert(app.metadata.end(), m_shared.begin(), m_shared.end());
      }
      if (app.component == Component::Ui && !m_startPage.empty()) {
        app.program = CleanStartPage(m_startPage);
      }
    }
  }

  void Check() {
    if (m_manifest.apps.empty()) {
      throw PackageError(
          std::string("config.xml names no application: it needs an application or a "
                      "service of the namespace ") +
          TIZEN);
    }
    if (m_manifest.id.empty()) {
      m_manifest.id = PackageOfApp(m_manifest.apps.front().id);
    }
    if (!IsPackageId(m_manifest.id)) {
      throw PackageError("config.xml: the package id \"" + m_manifest.id +
                         "\" must be 1 to 64 letters, digits, \"_\" or \"-\"");
    }
    if (m_manifest.version.empty() || m_manifest.version.size() > MAX_ID_LENGTH) {
      throw PackageError("config.xml: the widget has no usable version");
    }
    std::set<std::string> ids;
    for (const PackageApp& app : m_manifest.apps) {
      CheckAppId(app.id, m_manifest.id);
      if (!ids.insert(app.id).second) {
        throw PackageError("config.xml names the application \"" + app.id + "\" twice");
      }
    }
  }

  const xmlNode* m_root;
  PackageManifest m_manifest;
  std::vector<Metadata> m_shared;
  std::string m_startPage;
};

}  // namespace

const char* ComponentName(Component component) {
  return component == Component::Ui ? "ui" : "service";
}

PackageManifest ParseConfig(const std::string& xml) {
  const Doc doc = Parse(xml);
  const xmlNode* root = xmlDocGetRootElement(doc.get());
  if (root == nullptr || !Is(root, WIDGETS, "widget")) {
    throw PackageError(std::string("config.xml has no widget of the namespace ") + WIDGETS);
  }
  return ManifestReader(root).Read();
}

Json::Value ToJson(const std::vector<Metadata>& metadata) {
  Json::Value list(Json::arrayValue);
  for (const Metadata& entry : metadata) {
    Json::Value& item = list.append(Json::objectValue);
    item["key"] = entry.key;
    item["value"] = entry.value;
  }
  return list;
}

Json::Value ToJson(const PackageManifest& manifest) {
  Json::Value root(Json::objectValue);
  root["id"] = manifest.id;
  root["version"] = manifest.version;
  root["label"] = manifest.label;
  root["apps"] = Json::Value(Json::arrayValue);
  for (const PackageApp& app : manifest.apps) {
    Json::Value& item = root["apps"].append(Json::objectValue);
    item["id"] = app.id;
    item["component"] = ComponentName(app.component);
    item["program"] = app.program;
    item["metadata"] = ToJson(app.metadata);
  }
  return root;
}

bool IsRemotePage(const std::string& page) {
  return page.find("://") != std::string::npos;
}

bool IsPackageId(const std::string& text) {
  return !text.empty() && text.size() <= 64 &&
         std::all_of(text.begin(), text.end(),
                     [](unsigned char c) { return std::isalnum(c) != 0 || c == '_' || c == '-'; });
}

std::string PackageOfApp(const std::string& appId) {
  return appId.substr(0, appId.find('.'));
}

std::string CleanRelativeName(const std::string& name) {
  const bool odd = std::any_of(name.begin(), name.end(),
                               [](unsigned char c) { return c < 0x20 || c == 0x7f || c == '\\'; });
  if (odd) {
    throw PackageError("a file name holds a backslash or a control character");
  }
  if (!name.empty() && name.front() == '/') {
    throw PackageError("the file name \"" + name + "\" is absolute");
  }
  std::string clean;
  for (std::size_t at = 0; at <= name.size();) {
    const std::size_t end = std::min(name.find('/', at), name.size());
    const std::string part = name.substr(at, end - at);
    at = end + 1;
    if (part == "..") {
      throw PackageError("the file name \"" + name + "\" leads out of the package");
    }
    if (part.size() > 255) {
      throw PackageError("a file name of " + std::to_string(part.size()) +
                         " bytes is too long for a file system");
    }
    if (!part.empty() && part != ".") {
      clean += (clean.empty() ? "" : "/") + part;
    }
  }
  if (clean.size() > 2048) {
    throw PackageError("a path of " + std::to_string(clean.size()) + " bytes is too long");
  }
  return clean;
}

}  // namespace desk

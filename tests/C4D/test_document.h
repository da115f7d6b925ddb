// Documents with the plug-in's classes, for tests of single parts of the plug-in.
#pragma once

#include <memory>

#include "C4D/volume_object.h"
#include "C4D/volume_renderer.h"
#include "C4D/volume_tag.h"
#include "host/format/document_reader.h"
#include "host/small_host.h"
#include "support/support.h"

namespace nbx::test {

/// The text of a file in data/, with other texts in place of its words in capitals.
inline std::string data(const std::string& name,
                        const std::vector<std::pair<std::string, std::string>>& words = {}) {
  std::string text = read_file(NBX_C4D_DATA "/" + name);
  for (const auto& [word, value] : words)
    for (auto at = text.find(word); at != text.npos; at = text.find(word, at + value.size()))
      text.replace(at, word.size(), value);
  return text;
}

class TestDocument {
 public:
  /// `objects` are the document's objects, a whole document, or the name of a .json file in data/.
  /// `more` are members of the document next to its objects.
  explicit TestDocument(const std::string& objects, const std::string& more = "") {
    register_volume_object(host_, "Volume");
    register_volume_tag(host_, "Emitter");
    register_volume_renderer(host_, "Smoke and Fire");
    const std::string text = objects.ends_with(".json") ? data(objects) : objects;
    document_ = host::ReadDocument(text.starts_with(R"({"fps")")
                                       ? text
                                       : R"({"fps": 25, )" + more + R"("objects": [)" + text + "]}",
                                   "/", host_.Classes());
    document_->Open();
  }
  host::Document& operator*() { return *document_; }
  host::Document* operator->() { return document_.get(); }
  host::SmallHost& host() { return host_; }
  host::BaseObject& object(const std::string& name) { return *document_->FindByName(name).at(0); }

 private:
  host::SmallHost host_;
  std::unique_ptr<host::Document> document_;
};

}  // namespace nbx::test

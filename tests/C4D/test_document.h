// Documents with the plug-in's classes, for tests of single parts of the plug-in.
#pragma once

#include <memory>
#include <string>

#include "C4D/volume_object.h"
#include "C4D/volume_renderer.h"
#include "C4D/volume_tag.h"
#include "host/format/document_reader.h"
#include "host/small_host.h"
#include "support/support.h"

namespace nbx::test {

class TestDocument {
 public:
  /// `objects` are those of the document or, if they end so, the name of a .json file in data/;
  /// `more` are members of the document beside its objects.
  explicit TestDocument(const std::string& objects, const std::string& more = "") {
    register_volume_object(host_, "Volume");
    register_volume_tag(host_, "Emitter");
    register_volume_renderer(host_, "Smoke and Fire");
    document_ = host::ReadDocument(
        objects.ends_with(".json") ? read_file(NBX_C4D_DATA "/" + objects)
                                   : R"({"fps": 25, )" + more + R"("objects": [)" + objects + "]}",
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

#include "host/program_context.h"

#include <cstdio>
#include <iostream>
#include <optional>

#include <unistd.h>

#include "host/base/document_error.h"
#include "host/base/nearest_name.h"
#include "host/format/document_reader.h"
#include "host/format/document_writer.h"
#include "host/format/overrides.h"
#include "host/import/model_import.h"
#include "host/model/model_file.h"
#include "host/program/interrupts.h"
#include "host/program/scene_files.h"
#include "host/scene/scene_work.h"

namespace host {
namespace {

/// The object to process: by name, or the only one of its type.
SceneObject* Choose(const Document& document, const ElementClass& type, const std::string& name) {
  const std::string kind = type.description.name;
  std::vector<SceneObject*> found = document.AllObjects();
  std::vector<std::string> names;
  std::erase_if(found, [&](SceneObject* object) { return object->GetType() != type.id; });
  if (found.empty()) throw DocumentError("the scene has no " + kind + " object");
  for (SceneObject* object : found) names.push_back(object->GetName());

  if (!name.empty()) {
    std::erase_if(found, [&](SceneObject* object) { return object->GetName() != name; });
    if (found.empty())
      throw DocumentError("no " + kind + " object is named " + Quoted(name) +
                          DidYouMean(name, names));
    if (found.size() > 1)
      throw DocumentError(std::to_string(found.size()) + " objects are named " + Quoted(name) +
                          "; give each a name of its own");
  }
  if (found.size() == 1) return found.front();
  std::string list;
  for (const std::string& each : names) list += (list.empty() ? "" : ", ") + Quoted(each);
  throw DocumentError("the scene has " + std::to_string(found.size()) + " " + kind + " objects (" +
                      list + "); choose one with --object NAME");
}

bool HasTerminal() { return isatty(STDIN_FILENO) && isatty(STDERR_FILENO); }

std::string AnswerTo(const std::string& question) {
  std::fprintf(stderr, "%s", question.c_str());
  std::string answer;
  std::getline(std::cin, answer);
  return answer;
}

}  // namespace

std::unique_ptr<Document> ProgramContext::Read(const std::string& path) const {
  const bool is_model = IsModelName(path), force = arguments_.Has("force");
  if (!is_model && arguments_.Has("fps"))
    throw DocumentError(path, "the document has a frame rate; --fps is for model files");
  if (!is_model) return ReadDocumentFile(path, host_.Classes());
  std::optional<FrameRate> rate = arguments_.GetRate("fps");
  if (!rate && HasTerminal() && NeedsRate(path)) {
    const std::string answer = AnswerTo("Frames per second of " + path + ": ");
    std::string error;
    rate = FrameRate::Parse(answer, error);
    if (!rate) throw DocumentError(path, Quoted(answer) + " " + error);
  }
  return ImportModel(path, rate, host_.Classes(), force);
}

std::unique_ptr<BaseDocument> ProgramContext::LoadDocument(const Filename& path) {
  try {
    std::unique_ptr<Document> document = Read(path.path);
    ApplyOverrides(*document, arguments_.GetStrings("set"));
    try {
      document->force = arguments_.Has("force");
      if (!arguments_.Has("force")) CheckWork(*document);
      document->Open();
    } catch (const DocumentError& error) {
      throw DocumentError(path.path, error.what());
    }
    for (const std::string& warning : document->warnings) terminal_.Warning(warning);
    return document;
  } catch (const DocumentError& error) {
    terminal_.Error(error.what());
    return nullptr;
  }
}

std::vector<std::string> ProgramContext::CollectFiles(BaseDocument& document,
                                                      const Filename& folder) {
  return host::CollectFiles(static_cast<Document&>(document), folder.path);
}

bool ProgramContext::SaveDocument(const BaseDocument& document, const Filename& path) {
  try {
    WriteDocumentFile(static_cast<const Document&>(document), path.path);
    return true;
  } catch (const DocumentError& error) {
    terminal_.Error(error.what());
    return false;
  }
}

BaseObject* ProgramContext::FindObject(BaseDocument& document, std::int32_t type) {
  const auto& own = static_cast<const Document&>(document);
  try {
    return Choose(own, *host_.Classes().objects.Find(type), arguments_.GetString("object"));
  } catch (const DocumentError& error) {
    terminal_.Error(DocumentError(own.name, error.what()).what());
    return nullptr;
  }
}

std::optional<bool> ProgramContext::Ask(const std::string& question) {
  if (!HasTerminal()) return {};
  const std::string answer = AnswerTo(question + " [y/N] ");
  return answer == "y" || answer == "Y" || answer == "yes";
}

int ProgramContext::Interrupts() const { return InterruptCount(); }

}  // namespace host

// What the tests of scenes share: classes to read them with, and short ways to read and to fail.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/document_error.h"
#include "host/document_reader.h"
#include "tests/host/test_plugin.h"

namespace host::test {

/// The host's own classes, and those of the test plug-in without its code.
inline const SceneClasses& Classes() {
  static const SceneClasses classes = [] {
    SceneClasses all;
    const auto box = all.objects.Add({test_plugin::kBox, "Box", test_plugin::BoxDescription(), {}});
    const auto source =
        all.tags.Add({test_plugin::kSource, "Source", test_plugin::SourceDescription(), {}});
    if (!box.empty() || !source.empty()) throw DocumentError(box + source);
    return all;
  }();
  return classes;
}

inline std::unique_ptr<Document> Read(const std::string& text, const std::string& folder = "/") {
  return ReadDocument(text, folder, Classes());
}

/// The same for the text of the objects alone.
inline std::unique_ptr<Document> ReadObjects(const std::string& objects,
                                             const std::string& folder = "/") {
  return Read("{\"objects\": [" + objects + "]}", folder);
}

/// The message of the DocumentError that the action ends with; empty if it ends well.
template <class Action>
std::string ErrorOf(Action action) {
  try {
    action();
    return {};
  } catch (const DocumentError& error) {
    return error.what();
  }
}

struct Mistake {
  std::string text;
  const char* message;
};

/// Reads each text between the two parts; the error must be `place` and the message,
/// or begin so where the message ends with *.
inline void ExpectMistakes(const std::vector<Mistake>& mistakes, const std::string& before = "",
                           const std::string& after = "", const std::string& place = "") {
  for (const auto& [text, message] : mistakes) {
    const std::string error = ErrorOf([&, t = text] { Read(before + t + after)->Open(); });
    std::string expected = place + message;
    const bool whole = expected.back() != '*';
    if (!whole) expected.pop_back();
    EXPECT_EQ(whole ? error : error.substr(0, expected.size()), expected) << text;
  }
}

inline void GoToFrame(Document& document, std::int32_t frame) {
  document.SetTime(BaseTime::FromFrame(frame, document.GetFps()));
  document.ExecutePasses(nullptr, true, true, true);
}

}  // namespace host::test

// Helpers for tests of scenes: classes, reading, and error messages.
#pragma once

#include <memory>

#include "host/base/document_error.h"
#include "host/format/document_reader.h"
#include "support/support.h"
#include "tests/host/test_plugin.h"

namespace host::test {

/// The built-in classes, and those of the test plug-in without its code.
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

/// Reads a scene from the text of its objects.
inline std::unique_ptr<Document> ReadObjects(const std::string& objects,
                                             const std::string& folder = "/") {
  return Read("{\"objects\": [" + objects + "]}", folder);
}

/// The message of the DocumentError thrown by the action. Empty if there is none.
template <class Action>
std::string ErrorOf(Action action) {
  try {
    action();
    return {};
  } catch (const DocumentError& error) {
    return error.what();
  }
}

/// The text of a file in data.
inline std::string Data(const std::string& name) {
  return nbx::test::read_file(NBX_HOST_TEST_DATA "/" + name);
}

inline void ExpectNear(const Vector& a, const Vector& b, double tolerance = 1e-12) {
  EXPECT_LE(Length(a - b), tolerance) << a.x << " " << a.y << " " << a.z;
}

/// Six times the volume enclosed by the polygons. Positive if the outer sides face out.
inline double SixVolumes(const PolygonObject& mesh) {
  double sum = 0;
  const Vector* points = mesh.GetPointR();
  for (std::int32_t i = 0; i < mesh.GetPolygonCount(); ++i) {
    const auto [a, b, c, d] = mesh.GetPolygonR()[i];
    sum += Dot(points[a], Cross(points[b], points[c]) + Cross(points[c], points[d]));
  }
  return sum;
}

inline void GoToFrame(Document& document, double frame) {
  const FrameRate rate = document.GetFps();
  document.SetTime(
      BaseTime(std::llround(frame * 1000) * rate.Denominator(), 1000 * rate.Numerator()));
  document.ExecutePasses(nullptr, true, true, true);
}

}  // namespace host::test

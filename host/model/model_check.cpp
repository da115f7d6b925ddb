#include "host/model/model_check.h"

#include <array>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include <assimp/scene.h>
#include <unistd.h>

#include "host/base/document_error.h"
#include "host/base/nearest_name.h"

namespace Assimp {

// The library calls this function when a file violates an assumption of its authors. The library's
// own definition ends the program. The loader finds this definition first. It throws, and the
// library turns the exception into its error text.
__attribute__((visibility("default"))) void aiAssertViolation(const char* condition, const char*,
                                                              int);
void aiAssertViolation(const char* condition, const char*, int) {
  throw std::runtime_error(std::string("the file is damaged: ") + condition);
}

}  // namespace Assimp

namespace host {
namespace {

constexpr std::array kCrashes = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

thread_local const std::string* last_words = nullptr;
std::array<struct sigaction, kCrashes.size()> former_actions;
std::string guarded_line;
alignas(16) char handler_stack[16384];  // the crash may have exhausted the stack of the thread

void EndProgram(int signal) {
  if (last_words) {
    static_cast<void>(!write(STDERR_FILENO, last_words->data(), last_words->size()));
    _exit(2);
  }
  std::signal(signal, SIG_DFL);
  static_cast<void>(std::raise(signal));
}

std::string Figure(double number) {
  std::ostringstream text;
  text.precision(number < 1e15 ? 15 : 3);
  text << number;
  return text.str();
}

/// The minimum number of bytes that the header of a .ply file implies.
double PlyBytes(std::istream& file) {
  static const std::map<std::string, int> sizes = {
      {"char", 1},  {"uchar", 1},   {"int8", 1},   {"uint8", 1},  {"short", 2}, {"ushort", 2},
      {"int16", 2}, {"uint16", 2},  {"int", 4},    {"uint", 4},   {"int32", 4}, {"uint32", 4},
      {"float", 4}, {"float32", 4}, {"double", 8}, {"float64", 8}};
  double all = 0, count = 0;
  bool is_text = false;
  std::string line;
  while (std::getline(file, line) && line.substr(0, line.find('\r')) != "end_header") {
    std::istringstream words(line);
    std::string key, type;
    words >> key >> type;
    if (key == "format") is_text = type == "ascii";
    if (key == "element" && !(words >> count)) count = 0;
    if (key != "property") continue;
    if (type == "list") words >> type;  // an empty list is only a length
    const auto size = sizes.find(type);
    all += count * (is_text ? 2 : size == sizes.end() ? 1 : size->second);
  }
  if (!file) throw DocumentError("its header has no end");  // the importer would search forever
  return all;
}

/// The number of bytes that the chunk headers of a .glb file imply.
double GlbBytes(std::istream& file) {
  double all = 12;
  file.seekg(12);
  std::uint32_t head[2];
  while (file.read(reinterpret_cast<char*>(head), sizeof head)) {
    all += 8.0 + head[0];
    file.seekg(static_cast<std::streamoff>(all));
  }
  return all;
}

}  // namespace

void CheckClaims(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  char magic[4] = {};
  file.read(magic, sizeof magic);
  if (!file) return;
  const bool is_ply = std::memcmp(magic, "ply", 3) == 0;
  if (!is_ply && std::memcmp(magic, "glTF", 4) != 0) return;
  file.seekg(0);
  const auto fail = [&path](const std::string& what) {
    throw DocumentError(Quoted(path) + " can't be read as a mesh (" + what + "); export it again");
  };
  double claimed = 0;
  try {
    claimed = is_ply ? PlyBytes(file) : GlbBytes(file);
  } catch (const DocumentError& error) {
    fail(error.what());
  }
  const double bytes = std::filesystem::file_size(path);
  if (claimed > bytes)
    fail("its header claims at least " + Figure(claimed) + " bytes, but the file has " +
         Figure(bytes));
}

void CheckPolygons(const aiScene& scene) {
  double pairs = 0;
  for (unsigned i = 0; i < scene.mNumMeshes; ++i)
    for (unsigned f = 0; f < scene.mMeshes[i]->mNumFaces; ++f) {
      const double corners = scene.mMeshes[i]->mFaces[f].mNumIndices;
      if (corners > 4) pairs += corners * corners;
    }
  RefuseBeyond(pairs, kMostCornerPairs, "pairs of corners of large polygons");
}

void RefuseBeyond(double count, double most, const std::string& what) {
  if (count > most)
    throw DocumentError("it needs " + Figure(count) + " " + what + ", more than " + Figure(most) +
                        "; repair the file, or pass --force to read it anyway");
}

ModelGuard::ModelGuard(const std::string& path) {
  guarded_line = "nimbrix: error: " + Quoted(path) +
                 " is damaged and crashed the import library; export it again\n";
  last_words = &guarded_line;
  stack_t stack = {};
  stack.ss_sp = handler_stack;
  stack.ss_size = sizeof handler_stack;
  sigaltstack(&stack, nullptr);
  struct sigaction action = {};
  action.sa_handler = EndProgram;
  action.sa_flags = SA_ONSTACK;
  for (std::size_t i = 0; i < kCrashes.size(); ++i)
    sigaction(kCrashes[i], &action, &former_actions[i]);
}

ModelGuard::~ModelGuard() {
  last_words = nullptr;
  for (std::size_t i = 0; i < kCrashes.size(); ++i)
    sigaction(kCrashes[i], &former_actions[i], nullptr);
  stack_t none = {};
  none.ss_flags = SS_DISABLE;
  sigaltstack(&none, nullptr);
}

}  // namespace host

// Particles as columns of numbers: a snapshot of a particle system of a scene.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace nbx {

/// Columns of equal length by name; a row is a particle. Columns that nobody needs are absent.
///
///     "active"                             1 for a particle that is used, else 0
///     "position.x", "position.y", ".z"     world coordinates
///     "velocity.x", "velocity.y", ".z"     scene units per second, z negated
///     "age" (seconds), "mass", "size"
///
/// Copies share their columns, which never change.
class ParticleTable {
 public:
  using Column = std::vector<float>;

  std::size_t rows() const { return columns_.empty() ? 0 : columns_.begin()->second->size(); }

  /// Adds a column. False if its length differs from that of the others.
  bool add(const std::string& name, Column column) {
    if (!columns_.empty() && column.size() != rows()) return false;
    columns_[name] = std::make_shared<const Column>(std::move(column));
    return true;
  }

  /// Null if there is no such column.
  const float* column(const std::string& name) const {
    const auto found = columns_.find(name);
    return found == columns_.end() ? nullptr : found->second->data();
  }

 private:
  std::map<std::string, std::shared_ptr<const Column>> columns_;
};

}  // namespace nbx

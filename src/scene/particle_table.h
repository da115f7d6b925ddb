// Particles as columns of numbers: a snapshot of any particle system of a scene, for passes that
// run over all particles at once.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace nbx {

/// Columns of equal length by name; a row is a particle. Columns that nobody asked for are absent.
///
///     "active"                             1 for a particle that counts, else 0
///     "position.x", "position.y", ".z"     world coordinates
///     "velocity.x", "velocity.y", ".z"     scene units per second, z negated
///     "age" (seconds), "mass", "size"
///
/// Copies share their columns, which nothing changes once they are in.
class ParticleTable {
 public:
  using Column = std::vector<float>;

  std::size_t rows() const { return columns_.empty() ? 0 : columns_.begin()->second->size(); }

  /// Takes a column as long as those that are there already; one of another length is refused.
  bool add(const std::string& name, Column column) {
    if (!columns_.empty() && column.size() != rows()) return false;
    columns_[name] = std::make_shared<const Column>(std::move(column));
    return true;
  }

  /// Null for a column that is absent.
  const float* column(const std::string& name) const {
    const auto found = columns_.find(name);
    return found == columns_.end() ? nullptr : found->second->data();
  }

 private:
  std::map<std::string, std::shared_ptr<const Column>> columns_;
};

}  // namespace nbx

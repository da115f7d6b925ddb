// The frequencies of the symbols of the predictive codec, in a quasi-static model: symbols are
// counted all the time, but their intervals change only at the end of a period, and periods grow.
// Encoder and decoder run the same model.
//
// For kernel files only (util/isa.h).
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "cache/codecs/range_coder.h"

namespace nbx::NBX_ISA {

constexpr unsigned kSymbols = 65;
constexpr std::uint32_t kTotal = 1u << 16;  // of all frequencies at the end of a period

class FrequencyModel {
 public:
  FrequencyModel() {
    for (unsigned s = 0; s < kSymbols; ++s)
      frequency_[s] = kTotal / kSymbols + (s < kTotal % kSymbols ? 1 : 0);
    begin_period();
  }

  Interval interval(unsigned s) const { return interval_[s]; }

  // True if this began a period, with new intervals.
  bool count(unsigned s) {
    const bool ended = left_ == 0 && end_stretch();
    --left_;
    frequency_[s] += increment_;
    return ended;
  }

 private:
  // The halved frequencies add up to less than kTotal. The period distributes the difference
  // evenly: `left_` symbols count for `increment_`, then `more_` symbols for one more.
  __attribute__((noinline)) bool end_stretch() {
    if (more_ == 0) {
      begin_period();
      return true;
    }
    left_ = more_;
    more_ = 0;
    ++increment_;
    return false;
  }

  __attribute__((noinline)) void begin_period() {
    period_ = std::min(2 * period_, 1024u);
    std::uint32_t end = kTotal, missing = kTotal;
    for (unsigned s = kSymbols; s-- > 0;) {
      const std::uint32_t f = frequency_[s];
      end -= f;
      interval_[s] = {static_cast<std::uint16_t>(end), static_cast<std::uint16_t>(f)};
      frequency_[s] = (f >> 1) | 1;
      missing -= frequency_[s];
    }
    increment_ = missing / period_;
    more_ = missing % period_;
    left_ = period_ - more_;
  }

  Interval interval_[kSymbols];
  std::uint32_t frequency_[kSymbols];
  std::uint32_t period_ = (kSymbols >> 4) | 2;
  std::uint32_t left_ = 0, more_ = 0, increment_ = 0;
};

// Finds the symbol of a target in [0, kTotal). A slot holds the first symbol of 16 targets; few
// slots hold more than one.
class SymbolTable {
 public:
  explicit SymbolTable(const FrequencyModel& model) { rebuild(model); }

  __attribute__((noinline)) void rebuild(const FrequencyModel& model) {
    std::uint32_t slot = 0;
    for (unsigned s = 0; s < kSymbols; ++s) {
      const Interval i = model.interval(s);
      const std::uint32_t end = (std::uint32_t{i.low} + i.width + kMask) >> kShift;
      std::memset(first_ + slot, static_cast<int>(s), end - slot);
      slot = end;
    }
  }

  unsigned find(const FrequencyModel& model, std::uint32_t target) const {
    unsigned s = first_[target >> kShift];
    for (;; ++s) {
      const Interval i = model.interval(s);
      if (target < std::uint32_t{i.low} + i.width) return s;
    }
  }

 private:
  static constexpr unsigned kShift = 4, kMask = (1u << kShift) - 1;
  unsigned char first_[kTotal >> kShift];
};

}  // namespace nbx::NBX_ISA

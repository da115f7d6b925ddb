// A parallel loop whose threads take over each other's work.
#pragma once

#include <algorithm>
#include <atomic>
#include <vector>

#include <omp.h>

namespace nbx {

/// Calls body(i) once for each i from `first` to before `last`, in any order; by this thread alone
/// unless `parallel`. Each thread begins with the part that schedule(static) would give it, so it
/// works on memory that it was the first to touch. Then it takes over what other threads have left,
/// one i at a time, so calls may differ in length, and a thread that has lost its processor holds
/// up no more than the call that it is in. The body must not throw.
template <class Body>
void shared_loop(int first, int last, bool parallel, const Body& body) {
  const int threads = parallel ? std::min(omp_get_max_threads(), last - first) : 1;
  if (threads < 2) {
    for (int i = first; i < last; ++i) body(i);
    return;
  }
  struct alignas(64) Part {  // a cache line each, or threads slow each other down
    std::atomic<int> next;
    int end;
  };
  std::vector<Part> parts(threads);
  const int each = (last - first) / threads, longer = (last - first) % threads;
  for (int p = 0, at = first; p < threads; ++p) {
    parts[p].next = at;
    parts[p].end = at += each + (p < longer ? 1 : 0);
  }
#pragma omp parallel num_threads(threads)
  for (int p = 0; p < threads; ++p) {
    Part& part = parts[(omp_get_thread_num() + p) % threads];
    while (part.next.load(std::memory_order_relaxed) < part.end)
      if (const int i = part.next.fetch_add(1, std::memory_order_relaxed); i < part.end) body(i);
  }
}

}  // namespace nbx

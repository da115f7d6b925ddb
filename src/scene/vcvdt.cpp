#include "scene/vcvdt.h"

#include <algorithm>

namespace nbx {

template <class T>
void VCVDT<T>::reset(const Vec3i& dims) {
  for (Field<T>* field : {&dx, &dy, &dz, &dist2}) {
    field->resize(dims);
    std::fill_n(field->data(), field->count(), kFar);
  }
  label.assign(dist2.count(), kNoId);
}

template struct VCVDT<float>;

}  // namespace nbx

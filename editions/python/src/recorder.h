// A histogram that keeps its samples: the functions that feed one then return one value an edge.
#ifndef QEL_GRIDWORK_PYTHON_RECORDER_H
#define QEL_GRIDWORK_PYTHON_RECORDER_H

#include "arrays.h"

namespace core {

class recorder : public gw::histogram {
 public:
  void process(double v) override { complete_ = complete_ && samples_.push_back(v); }

  values samples() const {
    if (!complete_) throw std::bad_alloc();
    return copied(samples_);
  }

 private:
  values samples_;
  bool complete_ = true;
};

}  // namespace core

#endif

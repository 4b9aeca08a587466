// The evaluator bracket: opened on construction with one root and one local word, closed on every
// way out.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

struct EvaluatorFrame {
  // Opens the bracket around the value in *root.
  EvaluatorFrame(EfiCallContext* context, Anyval** root) : evaluator(context->evaluator) {
    evaluator->push_root(root);
    evaluator->push_local(&local);
  }
  ~EvaluatorFrame() { evaluator->pop_frame(); }
  EvaluatorFrame(const EvaluatorFrame&) = delete;
  EvaluatorFrame& operator=(const EvaluatorFrame&) = delete;

  EfiEvaluator* evaluator;
  Anyval* local = nullptr;
};

}  // namespace matrix_pack

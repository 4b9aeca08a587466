// The evaluator bracket: opened on construction, closed on every way out.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

struct EvaluatorFrame {
  // Opens the bracket around the value in *root.
  EvaluatorFrame(EfiCallContext* context, Anyval** root) : evaluator(context->evaluator) {
    evaluator->push_root(root);
  }
  ~EvaluatorFrame() { evaluator->pop_frame(); }
  EvaluatorFrame(const EvaluatorFrame&) = delete;
  EvaluatorFrame& operator=(const EvaluatorFrame&) = delete;

  // Adds a word that holds, or will hold, a value.
  void add(Anyval** local) { evaluator->push_local(local); }

  EfiEvaluator* evaluator;
};

// The bracket as most functions use it: one argument, and one empty local word.
struct ArgumentFrame {
  ArgumentFrame(EfiCallContext* context, Anyval* value)
      : argument(value), frame(context, &argument) {
    frame.add(&local);
  }

  Anyval* argument;
  Anyval* local = nullptr;
  EvaluatorFrame frame;
};

}  // namespace matrix_pack

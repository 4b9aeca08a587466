// The evaluator bracket: opened on construction, closed on every way out.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// The bracket around the words of a call that hold values.
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

  EfiEvaluator* evaluator;  // Of the context.
};

// The bracket as most functions use it: one argument, and one empty local word.
struct ArgumentFrame {
  // Opens it around `value`.
  ArgumentFrame(EfiCallContext* context, Anyval* value)
      : argument(value), frame(context, &argument) {
    frame.add(&local);
  }

  Anyval* argument;         // What it was opened around.
  Anyval* local = nullptr;  // For a value that the call makes.
  EvaluatorFrame frame;     // What keeps both.
};

}  // namespace matrix_pack

// Values of every kind and shape, made from a fuzzer's input.
#pragma once

#include "tests/calls/calls.hpp"
#include "tests/fuzz/byte_reader.hpp"
#include "tests/support/test_host.hpp"

namespace fuzz {

class Values {
 public:
  Values(test::TestHost& host, ByteReader& in) : host_(host), in_(in) {}

  // Most often an array; else a scalar, string, function, error or reference, or once more a value
  // made before.
  Anyval* any();
  // Of that kind, or of any: see calls::Function.
  Anyval* of_kind(std::int32_t kind);
  Anyval* scalar();

  // Makes the functions among the values answer as if they had not been called yet.
  void rewind() { calls_ = 0; }

 private:
  Anyval* matrix();
  Anyval* function();
  Anyval* other_kind();
  Anyval* nested(int rows, int cols);

  test::TestHost& host_;
  ByteReader& in_;
  std::vector<Anyval*> made_;
  int depth_ = 0;
  int calls_ = 0;
};

}  // namespace fuzz

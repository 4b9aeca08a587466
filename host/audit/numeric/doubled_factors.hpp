// LU factors in twice the digits.
#pragma once

#include <vector>

#include "host/audit/numeric/double_double.hpp"

namespace audit {

// P A = L U with partial pivoting, for a square matrix of elements below about 2.
class DoubledFactors {
 public:
  DoubledFactors(const Matrix& A, efi::StopFlag stop);

  // Whether a pivot is 0: nothing may be solved then.
  bool is_singular() const { return singular_; }
  Vector solve(const Vector& b) const;             // A⁻¹ b
  Vector solve_transposed(const Vector& b) const;  // A⁻ᵀ b

 private:
  Double2 at(int i, int j) const { return {hi_(i, j), lo_(i, j)}; }

  Matrix hi_, lo_;
  std::vector<int> pivots_;
  bool singular_ = false;
};

}  // namespace audit

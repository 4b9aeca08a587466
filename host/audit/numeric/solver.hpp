// Linear systems solved to nearly twice the digits, and the condition of their matrix.
#pragma once

#include <cmath>
#include <optional>

#include "host/audit/numeric/doubled_factors.hpp"
#include "host/audit/numeric/matrix.hpp"

namespace audit {

// LU factors of the square matrix A, equilibrated: A_s = D_r A D_c; in twice the digits where the
// condition leaves none of a double's. All vectors are those of A_s.
// Cost: 2/3 n³ for the factors, 2 n² for each solve; in twice the digits some ten times that.
class Solver {
 public:
  Solver(const Matrix& A, efi::StopFlag stop);

  const Matrix& matrix() const { return scaled_; }
  const Equilibration& scaling() const { return scaling_; }

  // ‖A_s‖₁ ‖A_s⁻¹‖₁, the inverse's norm by Hager's estimate (N. J. Higham, Accuracy and Stability
  // of Numerical Algorithms, 2nd ed., algorithm 15.1), which is rarely below a third.
  double condition() const { return condition_; }
  // Whether no solution has a digit that could be told: a pivot is 0, or the condition leaves none
  // of twice the digits. Nothing below may be asked then.
  bool is_hopeless() const;

  Vector solve(Vector b) const;             // A_s⁻¹ b
  Vector solve_transposed(Vector b) const;  // A_s⁻ᵀ b

  // Brings x closer to A_s⁻¹ b, with residuals of twice the digits (Higham, chapter 12), until it
  // is good to more than the digits of a double, or to all that those residuals tell. False where
  // the corrections do not contract: x then says nothing.
  bool refine(const Vector2& b, Vector2& x) const;
  // A_s⁻¹ b refined; nothing where that fails.
  std::optional<Vector> refined_solution(const Vector& b) const;

 private:
  void factor(efi::StopFlag stop);
  double inverse_norm() const;
  Vector unrelated_side() const;
  // What the condition takes from the digits of the factors.
  double loss() const;

  Matrix scaled_, factors_;
  std::optional<DoubledFactors> doubled_;  // Then those above say nothing.
  Equilibration scaling_;
  std::vector<int> pivots_;
  bool singular_ = false;
  double condition_ = HUGE_VAL;
};

}  // namespace audit

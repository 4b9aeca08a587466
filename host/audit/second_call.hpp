// A second opinion: the same function called once more, on a matrix that has the same answer.
#pragma once

#include <complex>
#include <optional>
#include <vector>

#include "host/audit/check.hpp"

namespace audit {

using Complex = std::complex<double>;
using Numbers = std::vector<Complex>;

// What the call with these matrices gives, followed by TOL if it is not null; null where it was
// stopped. Values of the host's store; the caller of `run` reclaims them.
const Anyval* call_again(const Request& r, std::span<const Parts* const> matrices,
                         const double* tolerance);

// The numbers of a matrix; none of an error, or where some are not finite.
Numbers numbers_of(const Anyval* value);

// A random order of 0 to n - 1.
std::vector<int> random_order(Random& random, int n);
// The matrix with its rows and columns in that order.
Matrix permuted(const Matrix& A, const std::vector<int>& rows, const std::vector<int>& cols);

// Adds random numbers of at most `size` to the elements; to a symmetric matrix the same on both
// sides.
void add_noise(Matrix& A, double size, bool symmetric, Random& random);

// Powers of two that bring rows and columns of equal index to about the same size, by a similarity
// (B. N. Parlett, C. Reinsch, Balancing a matrix, 1969; without its permutations).
void balance(Parts& A);

// Pairs the numbers of x with those of y, the nearest first, by distance(x_i, y_j). For each of x
// the index in y, or -1 where y is shorter.
using Distance = double (*)(const Complex& x, const Complex& y);
std::vector<int> nearest_pairs(const Numbers& x, const Numbers& y, Distance distance);

}  // namespace audit

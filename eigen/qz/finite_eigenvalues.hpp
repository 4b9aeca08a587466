// Which eigenvalues genvals and genvecs give: the finite ones. Infinite ones are dropped at two
// places, both of them here: from what the stages find, and, where M and N were exchanged because N
// is singular, as those whose reciprocal would be infinite.
#pragma once

#include "eigen/qz/stages.hpp"
#include "pack/host_interface.hpp"

namespace matrix_pack {

// --- What the stages find: lambda = alpha / beta is infinite when beta alone is 0. Where both are,
// any number is a solution, and 0 is given. ---

// The number of finite eigenvalues.
int count_finite(const QzPair& pair, const QzValues& found);
// The finite eigenvalues, `count` of them, as a column with both part arrays; null without memory.
aMatrix* finite_values(EfiCallContext* context, const QzPair& pair, const QzValues& found,
                       int count);
// Their vectors, from Z, as the columns of a matrix that has an imaginary array when that is not
// zero; null without memory.
aMatrix* finite_vectors(EfiCallContext* context, const QzPair& pair, const QzValues& found,
                        int count);

// --- Of the exchanged pair, N x = mu M x: the eigenvalues mu that count as nonzero, so that
// lambda = 1 / mu is finite. They are those whose real part is larger than TOL; a purely imaginary
// one never counts: kept, hosts rely on it. ---

// The number of nonzero eigenvalues in a column of `count`.
int count_nonzero(const aMatrix* values, int count, double tolerance);
// 1 / mu for each of them, `kept` in all, as a new column; or the value for exhausted memory.
Anyval* reciprocals(EfiCallContext* context, const aMatrix* values, int count, double tolerance,
                    int kept);
// Their vectors, columns of `vectors`, as a new matrix; or the value for exhausted memory.
Anyval* kept_columns(EfiCallContext* context, const aMatrix* values, const aMatrix* vectors,
                     int count, double tolerance, int kept);

}  // namespace matrix_pack

// Functions of numbers. Those of complex numbers give the principal value, and a real one for a
// real number wherever there is one.
#pragma once

#include "host/worksheet/values/value.hpp"

namespace worksheet {

Number square_root(const Number& z);
Number exponential(const Number& z);
Number logarithm(const Number& z);
Number logarithm_2(const Number& z);
Number logarithm_10(const Number& z);

Number sine(const Number& z);
Number cosine(const Number& z);
Number tangent(const Number& z);
Number arc_sine(const Number& z);
Number arc_cosine(const Number& z);
Number arc_tangent(const Number& z);

Number hyperbolic_sine(const Number& z);
Number hyperbolic_cosine(const Number& z);
Number hyperbolic_tangent(const Number& z);
Number area_sine(const Number& z);
Number area_cosine(const Number& z);
Number area_tangent(const Number& z);

Number magnitude(const Number& z);
// The angle from the positive real axis, in radians above -pi and up to pi; 0 for 0.
Number argument(const Number& z);
// z/|z|: -1, 0 or 1 for a real number.
Number sign(const Number& z);
// Of complex numbers by C. Lanczos, "A Precision Approximation of the Gamma Function", SIAM Journal
// on Numerical Analysis B 1 (1964), with the coefficients of P. Godfrey (2001): 13 digits near 1.
Number gamma_function(const Number& z);
Number real_part(const Number& z);
Number imaginary_part(const Number& z);
Number conjugate(const Number& z);

double whole_below(double x);
double whole_above(double x);
// The nearest integer; of two as near, the one farther from zero.
double nearest_whole(double x);
// Without its fraction.
double whole_towards_zero(double x);

// The angle of the point (x, y), given as y and x.
double angle_of(double y, double x);
double hypotenuse(double x, double y);
// x modulo y: the remainder that has the divisor's sign.
double modulo(double x, double y);
// Where one of them is NaN, so is the result.
double larger(double x, double y);
double smaller(double x, double y);

}  // namespace worksheet

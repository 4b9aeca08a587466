# A steel cantilever under a load at its tip: from section data to the deflection.
E = 210{GPa}; b = 100{mm}; h = 200{mm}; L = 3{m}; F = 10{kN};

# Second moment of area of the section, and the bending stiffness.
I = b*h^3/12 in {cm^4}
EI = E*I

# The stiffness of one beam element, clamped at one end. The unknowns are the deflection w and the
# slope times the length, so that one unit serves the whole matrix.
K = EI/L^3 * [12, -6; -6, 4]
u = K \ [F; 0]
w = u[0]
slope = u[1]/L

# By the textbook: w = F L^3 / (3 E I), slope = F L^2 / (2 E I).
w - F*L^3/(3*EI) in {mm}
slope - F*L^2/(2*EI)

# The largest bending stress, at the clamp.
sigma = F*L*(h/2)/I

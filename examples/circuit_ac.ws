# The ladder of circuit.ws with a capacitor C beside each resistor to ground, at the frequency f.
n = 8; R = 1{kOhm}; C = 100{nF}; V = 10{V}; f = 250{Hz};

# Admittance from a node to ground.
Y = 1/R + 2i*pi*f*C
G = (2/R + Y)*identity(n);
G[end, end] -= 1/R;
for k = 1:n-1; G[k, k - 1] = -1/R; G[k - 1, k] = -1/R; end
J = zeros(n, 1);
J[0] = V/R
v = G \ J
level = abs(v)

# A wave that runs to the end of the ladder and back: with cosh(c) = 1 + R Y / 2, node k of 1 to n has
# the voltage V cosh(c (n + 1/2 - k)) / cosh(c (n + 1/2)).
c = acosh(1 + R*Y/2)
exact = V*cosh(c*(n + 0.5 - (1:n)))/cosh(c*(n + 0.5));
max(abs(v - exact)) < 1e-13{V}

# The ladder of circuit.ws with a capacitor C beside each resistor to ground, at the frequency f.
n = 8
R = 1{kOhm}
C = 100{nF}
V = 10{V}
f = 250{Hz}

# Admittance from a node to ground.
Y = 1/R + 2i*pi*f*C
chain(i, j) = if(i == j, if(i == n - 1, 1, 2), if(abs(i - j) == 1, -1, 0))
G = matrix(n, n, chain) / R + Y * identity(n)
feed(i, j) = if(i == 0, 1, 0)
J = matrix(n, 1, feed) * V / R
v = lsolve(G, J)
level = abs(v)

# A wave that runs to the end of the ladder and back: with cosh(c) = 1 + R Y / 2, node k of 1 to n has
# the voltage V cosh(c (n + 1/2 - k)) / cosh(c (n + 1/2)).
half = 1 + R*Y/2
wave = half + sqrt(half^2 - 1)
cosine(k) = (wave^k + wave^(-k)) / 2
exact(i, j) = cosine(n - i - 0.5) / cosine(n + 0.5)
max(abs(v - matrix(n, 1, exact) * V)) < 1e-13{V}

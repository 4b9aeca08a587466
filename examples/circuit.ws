# A resistor ladder: n sections, each with a resistor R along the line and one from the line to
# ground, fed with the voltage V.
#
#   V --R--+--R--+-- ... --R--+
#          R     R            R
#          |     |            |
n = 8
R = 1{kOhm}
V = 10{V}

# The currents that leave each node add up to what the source feeds in: G v = J.
entry(i, j) = if(i == j, if(i == n - 1, 2, 3), if(abs(i - j) == 1, -1, 0))
G = matrix(n, n, entry) / R
feed(i, j) = if(i == 0, 1, 0)
J = matrix(n, 1, feed) * V / R
v = lsolve(G, J)

# All resistors are equal: the voltages are to each other as every second Fibonacci number.
golden = (1 + sqrt(5)) / 2
fibonacci(k) = floor(golden^k / sqrt(5) + 0.5)
exact(i, j) = fibonacci(2*(n - i) - 1) / fibonacci(2*n + 1)
max(abs(v - matrix(n, 1, exact) * V)) < 1e-14{V}

# What the source delivers is what the resistors turn into heat.
delivered = V * (V - v[0]) / R
along(i, j) = if(i == j, 1, if(i == j + 1, -1, 0))
drops = matrix(n, n, along) * v - matrix(n, 1, feed) * V
heat = (drops' * drops + v' * v)[0, 0] / R
(delivered - heat) / delivered

# The inverse of G gives the resistance that each node shows to ground, on its diagonal.
Z = G^-1
Z[n - 1, n - 1]

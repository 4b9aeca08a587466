# A resistor ladder: n sections, each with a resistor R along the line and one from the line to
# ground, fed with the voltage V.
#
#   V --R--+--R--+-- ... --R--+
#          R     R            R
#          |     |            |
n = 8; R = 1{kOhm}; V = 10{V};

# The currents that leave each node add up to what the source feeds in: G v = J.
G = 3*identity(n)/R;
G[end, end] = 2/R;
for k = 1:n-1; G[k, k - 1] = -1/R; G[k - 1, k] = -1/R; end
G
J = zeros(n, 1);
J[0] = V/R
v = G \ J

# All resistors are equal: the voltages are to each other as every second Fibonacci number.
golden = (1 + sqrt(5)) / 2
fibonacci(k) = round(golden .^ k / sqrt(5))
exact = fibonacci(2*n - 1:-2:1) / fibonacci(2*n + 1) * V;
max(abs(v - exact)) < 1e-14{V}

# What the source delivers is what the resistors turn into heat.
delivered = V * (V - v[0]) / R
drops = v - stack([V], v[0:n-2]);
heat = (dot(drops, drops) + dot(v, v)) / R
(delivered - heat) / delivered

# The inverse of G gives the resistance that each node shows to ground, on its diagonal.
Z = G^-1;
Z[end, end]

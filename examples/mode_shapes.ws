## Vibration of a chain of masses

# Five equal masses between two walls, joined by springs: natural frequencies, mode shapes, and what
# a little damping does to them. `worksheet --html modes.html mode_shapes.ws` makes a report of this
# worksheet, pictures included.
#
#     |--k--[m]--k--[m]--k--[m]--k--[m]--k--[m]--k--|
#
n = 5
k = 4{kN/m}           # of each spring
m = 100{g}            # of each mass

## Natural frequencies

# Vibrations `x cos(w t)` satisfy `K x = w^2 m x`, with the stiffness matrix
K = 2*k*identity(n);
for i = 1:n-1; K[i, i - 1] = -k; K[i - 1, i] = -k; end
heatmap(K, "stiffness")

# The eigenvalues of K/m are the squares of the angular frequencies.
squares = eigenvals(K/m) in {1/s^2}
f = sqrt(squares)/(2*pi) in {Hz}

# By the textbook they are 2 sqrt(k/m) sin(pi j / (2 (n + 1))), j = 1 ... n.
exact(j) = 2*sqrt(k/m)*sin(pi*j/(2*(n + 1)))/(2*pi)
max(f) - exact(n) in {Hz}
min(f) - exact(1) in {Hz}

## Mode shapes

# The eigenvectors say how the masses move together: here those of the two slowest vibrations, with the
# walls at both ends.
shapes = eigenvecs(K/m)
plot(sin(pi*(0:n+1)*[1, 2]/(n + 1)), "mode", "x: mass", "y: displacement")
norme(shapes'*shapes - identity(n))

## Damping

# With damping in proportion to the stiffness, c = beta K, the motion has the eigenvalues of a first-order
# system:
beta = 1{ms}
tau = 1{s}            # the unit of time in the matrix, which has only one unit
state = stack(augment(zeros(n, n), identity(n)), augment(-K/m*tau^2, -beta*K/m*tau))
lambda = eigenvals(state)/tau
plot_eigenvals(lambda, "x: real part", "y: imaginary part")

# All vibrations die out:
max(re(lambda)) < 0

### What is left of the slowest one

# Its decay in half a second, and the envelope.
slow = max(re(lambda))
w = 2*pi*exact(1)
t = 0{ms}:2.5{ms}:500{ms};
fall = exp(slow*t);
swing = fall .* cos(w*t);
plot(t, swing, "displacement", t, fall, "envelope", "x: time")

## How well the system can be solved

# The singular values of the stiffness matrix lie within a factor of 14: its condition is good.
plot_svds(K)
cond2(K)

# Natural frequencies of a steel bar in longitudinal vibration, both ends fixed.
#
# Ten linear finite elements leave nine displacements. Vibrations x cos(omega t) satisfy
# K x = omega^2 M x with the stiffness matrix K and the mass matrix M of the two files.
E = 210e9{N/m^2};     # modulus of elasticity
rho = 7850{kg/m^3};   # density
h = 0.1{m};           # length of an element
K = read("bar_stiffness.mtx"){N/m}
M = read("bar_mass.mtx"){kg}
n = rows(K)

# The eigenvalues are omega^2. K and M are symmetric, M is positive definite: all are real.
sorted = sort(sqrt(real_only(genvals(K, M)))) / (2 * pi) in {Hz}

# The closed form: omega_j^2 = 6 E / (rho h^2) (1 - cos t_j) / (2 + cos t_j), t_j = j pi / (n + 1).
t = (1:n) * pi / (n + 1);
exact = sqrt(6 * E / (rho * h^2) * (1 - cos(t)) ./ (2 + cos(t))) / (2 * pi);
largest_deviation = max(abs(sorted - exact) ./ exact)

# Finite elements stiffen the bar: its own lowest frequency is a little lower.
stiffening = sorted[0] / (sqrt(E / rho) / (2 * (n + 1) * h)) - 1

# The modes, one a column, are orthogonal with respect to M.
modes = genvecs(K, M);
masses = modes' * M * modes;
d = zeros(n, 1);
for k = 0:n-1; d[k] = masses[k, k]; end
largest_coupling = max(abs(masses ./ sqrt(d*d') - identity(n)))

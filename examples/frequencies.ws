# Natural frequencies of a steel bar in longitudinal vibration, both ends fixed.
#
# Ten linear finite elements leave nine displacements. Vibrations x cos(omega t) satisfy
# K x = omega^2 M x with the stiffness matrix K and the mass matrix M of the two files.
E = 210e9{N/m^2}     # modulus of elasticity
rho = 7850{kg/m^3}   # density
h = 0.1{m}           # length of an element
K = read("bar_stiffness.mtx"){N/m}
M = read("bar_mass.mtx"){kg}
n = rows(K)

# The eigenvalues are omega^2. K and M are symmetric, M is positive definite: all are real.
frequencies = sqrt(real_only(genvals(K, M))) / (2 * pi) in {Hz}

# They come in the order in which the method finds them. The place of each is the number of lower ones.
lower(i, j) = frequencies[i] < frequencies[j]
one(i, j) = 1
place = matrix(n, n, lower)' * matrix(n, 1, one)
is_at(i, j) = place[j] == i
sorted = matrix(n, n, is_at) * frequencies

# The closed form: omega_j^2 = 6 E / (rho h^2) (1 - cos t_j) / (2 + cos t_j), t_j = j pi / (n + 1).
angle(i, j) = (i + 1) * pi / (n + 1)
t = matrix(n, 1, angle)
exact = sqrt(6 * E / (rho * h^2) * (1 - cos(t)) / (2 + cos(t))) / (2 * pi)
largest_deviation = max(abs(sorted - exact) / exact)

# Finite elements stiffen the bar: its own lowest frequency is a little lower.
stiffening = sorted[0] / (sqrt(E / rho) / (2 * (n + 1) * h)) - 1

# The modes, one a column, are orthogonal with respect to M.
modes = genvecs(K, M)
masses = modes' * M * modes
off_diagonal(i, j) = if(i == j, 0, masses[i, j] / sqrt(masses[i, i] * masses[j, j]))
largest_coupling = max(abs(matrix(n, n, off_diagonal)))

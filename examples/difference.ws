# The second difference operator, built by a function, and its known spectrum.
n = 12
entry(i, j) = if(i == j, 2, if(abs(i - j) == 1, -1, 0))
T = matrix(n, n, entry)

# Its eigenvalues are 2 - 2 cos(k pi / (n + 1)), k = 1 ... n, and its eigenvectors are sines.
exact(k, j) = 2 - 2*cos((k + 1)*pi/(n + 1))
lambda = eigenvals(T)
tr(T) - n*2
max(lambda) - max(matrix(n, 1, exact))
min(lambda) - min(matrix(n, 1, exact))

sines(i, k) = sqrt(2/(n + 1))*sin((i + 1)*(k + 1)*pi/(n + 1))
S = matrix(n, n, sines)
norme(T*S - S*diag(matrix(n, 1, exact)))

# The operator is positive definite; its condition grows with the square of n.
rows(cholesky(T))
cond2(T)

# The second difference operator, and its known spectrum.
n = 12
T = 2*identity(n);
for k = 1:n-1; T[k, k - 1] = -1; T[k - 1, k] = -1; end
T

# Its eigenvalues are 2 - 2 cos(k pi / (n + 1)), k = 1 ... n, and its eigenvectors are sines.
k = 1:n;
exact = 2 - 2*cos(k*pi/(n + 1));
lambda = eigenvals(T)
tr(T) - n*2
max(lambda) - max(exact)
min(lambda) - min(exact)

S = sqrt(2/(n + 1))*sin(k*k'*pi/(n + 1));
norme(T*S - S*diag(exact))

# The operator is positive definite; its condition grows with the square of n.
rows(cholesky(T))
cond2(T)

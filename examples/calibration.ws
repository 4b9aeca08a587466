# Calibrating an ozone monitor: a straight line through 36 readings, by two methods.
data = read("ozone.csv")
m = rows(data)
y = submatrix(data, 0, m - 1, 0, 0)
x = submatrix(data, 0, m - 1, 1, 1)
one(i, j) = 1
A = augment(matrix(m, 1, one), x)

# Least squares by the generalized inverse: y = b[0] + b[1] x.
b = geninv(A)*y

# The same by the QR decomposition: R b = Q' y.
Q, R = qr(A)
c = lsolve(submatrix(R, 0, 1, 0, 1), submatrix(Q'*y, 0, 1, 0, 0))

# The residual standard deviation.
r = y - A*b
s = sqrt((r'*r)[0, 0]/(m - 2))

# How far the two columns are from dependent: the residuals may be trusted to that many digits less.
sigma = svds(A)
rank(A)
sigma[0]/sigma[1]
cond2(A'*A)

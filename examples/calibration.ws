# Calibrating an ozone monitor: a straight line through 36 readings, by two methods.
data = read("ozone.csv")
y = data[:, 0]; x = data[:, 1]; m = rows(data);
A = augment(ones(m, 1), x);

# Least squares: y = b[0] + b[1] x.
b = A \ y

# The same by the QR decomposition: R b = Q' y.
Q, R = qr(A);
c = R[0:1, :] \ (Q'*y)[0:1]

# The residual standard deviation.
r = y - A*b;
s = sqrt(dot(r, r)/(m - 2))

# How far the two columns are from dependent: the residuals may be trusted to that many digits less.
sigma = svds(A)
rank(A)
sigma[0]/sigma[1]
cond2(A'*A)

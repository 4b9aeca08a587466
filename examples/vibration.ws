# A chain of equal masses between two walls: frequencies and mode shapes, free and damped.
n = 5; k = 4{kN/m}; m = 100{g};
tau = 1{s};   # the unit of time in matrices that hold more than one quantity
K = 2*k*identity(n);
for i = 1:n-1; K[i, i - 1] = -k; K[i - 1, i] = -k; end

# Free vibration: w^2 are the eigenvalues of K/m, w = 2 sqrt(k/m) sin(pi j / (2 (n + 1))).
squares = eigenvals(K/m)
shapes = eigenvecs(K/m)
norme(K/m*tau^2*shapes - shapes*diag(squares*tau^2)) / norme(K/m*tau^2)
norme(shapes'*shapes - identity(n))
w = sqrt(squares)

# Damped in proportion to the stiffness: x'' = -K/m x - beta K/m x'. As a first-order system the
# eigenvalues are -beta w^2 / 2 +- i w sqrt(1 - (beta w / 2)^2).
beta = 1{ms}
state = stack(augment(zeros(n, n), identity(n)), augment(-K/m*tau^2, -beta*K/m*tau))
lambda = eigenvals(state)/tau
max(re(lambda))

# The damping ratio of a mode is -re / abs: it grows with the frequency.
ratio = -re(lambda)/abs(lambda)

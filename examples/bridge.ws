# A truss bridge of 45 members over 48 m, from tables of its nodes and members: displacements, forces
# in the members, and a picture.
x = read("bridge_nodes.csv", "x"); y = read("bridge_nodes.csv", "y");
from = read("bridge_members.csv", "from"); to = read("bridge_members.csv", "to");
A = read("bridge_members.csv", "A"); E = 210{GPa};
n = rows(x)
m = rows(from)

# Node i moves by u[2*i] to the right and by u[2*i + 1] upwards; the loads hang on it.
held = zeros(2*n, 1);
held[0:2:end] = read("bridge_nodes.csv", "held x");
held[1:2:end] = read("bridge_nodes.csv", "held y");
F = zeros(2*n, 1);
F[1:2:end] = -read("bridge_nodes.csv", "load");

# A member's stretch is c*u[at], with its direction in c; its stiffness is E A / L.
length_of(e) = hypot(x[to[e]] - x[from[e]], y[to[e]] - y[from[e]])
direction(e) = (dx = x[to[e]] - x[from[e]]; dy = y[to[e]] - y[from[e]]; [-dx, -dy, dx, dy]/length_of(e))
places(e) = [2*from[e], 2*from[e] + 1, 2*to[e], 2*to[e] + 1]
K = zeros(2*n, 2*n);
for e = 0:m-1
  at = places(e)
  c = direction(e)
  K[at, at] += E*A[e]/length_of(e) * (c'*c)
end

free = find(!held);
u = zeros(2*n, 1);
u[free] = K[free, free] \ F[free];
sag = min(u) in {mm}

# Forces in the members: those of the chords beside the middle are the largest.
N = zeros(m, 1);
for e = 0:m-1
  N[e] = E*A[e]/length_of(e) * (direction(e)*u[places(e)])[0]
end
pull = max(N) in {kN}
push = min(N) in {kN}
stress = max(abs(N ./ A)) in {MPa}

# By the moments of 11 loads of 40 kN about the nodes at the middle: 1440 kN at a height of 5 m.
pull - (220{kN}*20{m} - 40{kN}*(4 + 8 + 12 + 16){m})/5{m}
push + (220{kN}*24{m} - 40{kN}*(4 + 8 + 12 + 16 + 20){m})/5{m}

# The supports carry the loads.
R = K*u - F;
sum(R[1:2:end]) in {kN}

# As built, and with displacements a hundredfold. A gap parts one member from the next.
X = zeros(3*m, 1); Y = X; dX = X; dY = X;
gap = 0{m}/0;
for e = 0:m-1
  i = from[e]; j = to[e]
  X[3*e:3*e+2] = [x[i]; x[j]; gap]
  Y[3*e:3*e+2] = [y[i]; y[j]; gap]
  dX[3*e:3*e+1] = 100*[u[2*i]; u[2*j]]
  dY[3*e:3*e+1] = 100*[u[2*i + 1]; u[2*j + 1]]
end
plot(X, Y, "as built", X + dX, Y + dY, "loaded, a hundredfold")

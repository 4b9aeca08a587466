# A plane truss of six panels, simply supported, 50 kN at each inner joint of the bottom chord.
# truss_stiffness.mtx states the model and the order of the unknowns.
K = read("truss_stiffness.mtx"){N/m}
F = read("truss_loads.csv"){N}
u = K \ F in {mm}

# Joints by the index of their x; y follows.
B2 = 2; B3 = 4; T2 = 13; T3 = 15;
sag = u[B3 + 1]

# Forces in the chords of the panel beside the middle, from how much they are stretched.
EA = 210e9{N/m^2} * 2e-3{m^2}; panel = 2{m};
bottom = EA * (u[B3] - u[B2]) / panel in {kN}
top = EA * (u[T3] - u[T2]) / panel in {kN}

# The truss is statically determinate: the moments of the forces beside a cut give the same.
load = 50{kN}; support = 5*load/2; height = 2{m};
(support*2*panel - load*panel) / height in {kN}
-(support*3*panel - load*2*panel - load*panel) / height in {kN}

# The stiffness matrix is symmetric and positive definite, and not badly conditioned.
norm1(K - K')
rows(cholesky(K))
cond2(K)

# Is a feedback loop stable? An oscillator x'' = u that a state feedback u = -g x - d x' - h z with
# an integrator z' = x and a sluggish actuator (time constant T) is to hold at rest.
g = 6; d = 4; h = 2; T = 0.1;

# States z, x, x', u.
closed = [0, 1, 0, 0; 0, 0, 1, 0; 0, 0, 0, 1; -h/T, -g/T, -d/T, -1/T]
poles = eigenvals(closed)
stable = max(re(poles)) < 0

# The characteristic polynomial is s^4 + 10 s^3 + 40 s^2 + 60 s + 20: each pole makes it vanish.
p(s) = s.^4 + 10*s.^3 + 40*s.^2 + 60*s + 20
max(abs(p(poles))) < 1e-9

# With twelve times the integral gain the loop rings and diverges: by Routh and Hurwitz, 60 (400 - 60)
# must exceed 100 times the last coefficient.
closed[3, 0] *= 12
max(re(eigenvals(closed))) > 0
60*(10*40 - 60) < 100*20*12

// Rows whose function is not built yet.
#include "eigen/eigen.hpp"
#include "linsys/linsys.hpp"
#include "norms/norms.hpp"
#include "pack/exports.hpp"
#include "pack/results.hpp"
#include "structural/structural.hpp"

namespace matrix_pack {

namespace {

Anyval* not_available(EfiCallContext* context) {
  return call_error(context, "not available in this build");
}

}  // namespace

Anyval* rank(EfiCallContext* context, Anyval*) {
  return not_available(context);
}
Anyval* geninv(EfiCallContext* context, Anyval*, Anyval*) {
  return not_available(context);
}
Anyval* cond1(EfiCallContext* context, Anyval*) {
  return not_available(context);
}
Anyval* cond2(EfiCallContext* context, Anyval*) {
  return not_available(context);
}
Anyval* conde(EfiCallContext* context, Anyval*) {
  return not_available(context);
}
Anyval* condi(EfiCallContext* context, Anyval*) {
  return not_available(context);
}
Anyval* genvals(EfiCallContext* context, Anyval*, Anyval*, Anyval*) {
  return not_available(context);
}
Anyval* genvecs(EfiCallContext* context, Anyval*, Anyval*, Anyval*) {
  return not_available(context);
}

}  // namespace matrix_pack


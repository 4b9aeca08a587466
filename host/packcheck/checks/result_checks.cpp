// What a call comes to: that it returns, what it returns, and that it returns the same again.
#include <fmt/format.h>

#include <algorithm>

#include "host/packcheck/checks/checks.hpp"
#include "host/packcheck/memory/heap.hpp"

namespace packcheck {

namespace {

// How deep values are followed that hold values.
constexpr int kMostResultDepth = 8;

constexpr std::uint32_t kMatrixFlags = kHoldsNested | kIsNestedValue;

// Looks at the value of a call and at what it holds.
class ResultInspector {
 public:
  ResultInspector(Session& session, const Trial& trial) : session_(session), trial_(trial) {}

  std::vector<Complaint> inspect(const Anyval* result) {
    if (result == nullptr) {
      if (!may_be_null(session_, trial_)) complain("null", "gives null");
    } else {
      value(result, 0);
    }
    return std::move(complaints_);
  }

 private:
  template <class... Arguments>
  void complain(const char* rule, fmt::format_string<Arguments...> format,
                Arguments&&... arguments) {
    complaints_.push_back({rule, fmt::format(format, std::forward<Arguments>(arguments)...)});
  }

  bool is_argument(const Anyval* value) const {
    return std::ranges::find(trial_.arguments(), value) != trial_.arguments().end();
  }

  void value(const Anyval* value, int depth) {
    if (value == sError_OutOfMemory || is_argument(value) || depth > kMostResultDepth) return;
    if (!session_.store().owns(value)) {
      complain("foreign", "gives a value that is not, or no longer, the host's");
      return;
    }
    // A value inside of it may be one that came with an argument.
    if (!trial_.is_new(value) && depth == 0) {
      complain("stale", "gives a value that is neither new nor an argument");
      return;
    }
    switch (value->kind) {
      case kScalarKind:
      case kFunctionKind:
      case kOtherFunctionKind:
        return;
      case kStringKind:
        return text(static_cast<const sString*>(value));
      case kErrorKind:
        return error(static_cast<const aError*>(value), depth);
      case kMatrixKind:
        return matrix(static_cast<const aMatrix*>(value), depth);
      default:
        complain("kind", "gives a value of kind {}", value->kind);
    }
  }

  void text(const sString* string) {
    const auto size = heap::block_size(string->text);
    if (!size) complain("text", "gives a string whose text is not in memory of the host's");
  }

  void error(const aError* error, int depth) {
    if (error->message == nullptr || error->message->kind != kStringKind ||
        error->message->text == nullptr || *error->message->text == '\0') {
      complain("message", "gives an error value without a message");
      return;
    }
    const int count = static_cast<int>(trial_.arguments().size());
    if (error->arg < 0 || error->arg > count)
      complain("argument-number", "the error \"{}\" is tied to argument {} of {}",
               error->message->text, error->arg, count);
    if (error->value != nullptr) value(error->value, depth + 1);
  }

  void matrix(const aMatrix* m, int depth) {
    if (m->rows < 0 || m->cols < 0) {
      complain("shape", "gives a matrix of {} x {}", m->rows, m->cols);
      return;
    }
    if (m->leading_dimension != m->rows)
      complain("leading-dimension", "gives a {} x {} matrix with the leading dimension {}", m->rows,
               m->cols, m->leading_dimension);
    if ((m->flags & ~kMatrixFlags) != 0)
      complain("flags", "gives a matrix with the flags {:#x}", m->flags);
    const auto bytes =
        static_cast<std::uint64_t>(m->rows) * static_cast<std::uint64_t>(m->cols) * sizeof(double);
    if (m->byte_size != bytes) {
      complain("byte-size", "gives a {} x {} matrix with the byte size {}, not {}", m->rows,
               m->cols, m->byte_size, bytes);
      return;
    }
    if (m->re != nullptr && m->re == m->im)
      complain("array", "gives a matrix with one array for both parts");
    else if (part("real", m, m->re) && part("imaginary", m, m->im))
      elements(m, depth);
  }

  // An array of a result is a live block, large enough, that is no argument's: the host frees it.
  bool part(const char* which, const aMatrix* m, const double* array) {
    if (array == nullptr) return true;
    const auto size = heap::block_size(array);
    if (!size)
      complain("array", "gives a matrix whose {} array is no block from operator new, or was freed",
               which);
    else if (*size < m->byte_size)
      complain("array", "gives a matrix of {} bytes whose {} array has {}", m->byte_size, which,
               *size);
    else if (is_argument_array(array))
      complain("array", "gives a new matrix with the {} array of an argument", which);
    else
      return true;
    return false;
  }

  bool is_argument_array(const double* array) const {
    return std::ranges::any_of(trial_.arguments(), [&](const Anyval* argument) {
      if (argument->kind != kMatrixKind) return false;
      const auto* const m = static_cast<const aMatrix*>(argument);
      return array == m->re || array == m->im;
    });
  }

  void elements(const aMatrix* m, int depth) {
    const std::size_t count = m->byte_size / sizeof(double);
    for (const double* array : {m->re, m->im})
      for (std::size_t k = 0; array != nullptr && k < count; ++k)
        if (efi::is_nested_element(array[k])) value(efi::nested_value(array[k]), depth + 1);
  }

  Session& session_;
  const Trial& trial_;
  std::vector<Complaint> complaints_;
};

}  // namespace

std::vector<Complaint> complaints_about(Session& session, const Trial& trial,
                                        const Anyval* result) {
  if (!trial.escaped.empty()) return {{"exception", "throws " + trial.escaped}};
  return ResultInspector(session, trial).inspect(result);
}

bool may_be_null(const Session& session, const Trial& trial) {
  if (session.options.strict) return false;
  if (trial.refused) return true;
  return std::ranges::any_of(trial.arguments(), [](const Anyval* argument) {
    if (argument->kind != kMatrixKind) return false;
    const auto* const m = static_cast<const aMatrix*>(argument);
    return m->re == nullptr && m->im == nullptr;
  });
}

void check_survives(Session& session) {
  session.for_each_call([&](const Call& call) {
    Trial trial(session, call);
    trial.invoke();
    if (!trial.escaped.empty()) session.report("exception", "throws " + trial.escaped);
  });
}

void check_result(Session& session) {
  session.for_each_call([&](const Call& call) {
    Trial trial(session, call);
    const Anyval* const result = trial.invoke();
    if (!trial.escaped.empty()) return;
    for (const Complaint& complaint : complaints_about(session, trial, result))
      session.report(complaint.rule, complaint.message);
  });
}

void check_repeatable(Session& session) {
  session.for_each_call([&](const Call& call) {
    // Memory that is not initialised holds something else the second time.
    const auto run = [&](std::uint64_t pattern) {
      heap::fill_with(pattern);
      Trial trial(session, call);
      const Anyval* const result = trial.invoke();
      return complaints_about(session, trial, result).empty() ? meaning(session.store(), result)
                                                              : std::vector<std::uint64_t>{};
    };
    const auto first = run(heap::kMarkedNan);
    if (run(heap::kMarkedNumber) != first)
      session.report("differs", "gives another result when it is called again");
  });
}

}  // namespace packcheck

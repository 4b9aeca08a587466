#include <windows.h>

#include <iostream>

#include "host/efiutils/system/wide_text_windows.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/program/system/line_editor.hpp"

namespace worksheet {

// The console edits lines and recalls earlier ones itself.
struct LineEditor::State {
  Machine& machine;
  HANDLE input;
};

LineEditor::LineEditor(Machine& machine)
    : state_(std::make_unique<State>(machine, GetStdHandle(STD_INPUT_HANDLE))) {}

LineEditor::~LineEditor() = default;

std::optional<LineEditor::Line> LineEditor::next_line(const char* prompt, const std::string&) {
  std::cout << prompt << std::flush;
  std::wstring line;
  while (!line.ends_with(L'\n')) {
    constexpr DWORD kPiece = 4096;
    wchar_t piece[kPiece];
    DWORD count = 0;
    const bool read = ReadConsoleW(state_->input, piece, kPiece, &count, nullptr) != 0;
    if (!read || count == 0) {
      // Ctrl-C ends the wait a little before its own thread says so.
      constexpr int kMostWaits = 10;
      constexpr DWORD kPause = 20;
      for (int k = 0; k < kMostWaits && !state_->machine.interrupted; ++k) Sleep(kPause);
      break;
    }
    line.append(piece, count);
  }
  if (state_->machine.interrupted) {
    state_->machine.interrupted = Machine::kGoOn;
    return Line{{}, true};
  }
  constexpr wchar_t kEnd = L'\x1a';  // Ctrl-Z.
  if (line.empty() || line.front() == kEnd) return std::nullopt;
  while (line.ends_with(L'\n') || line.ends_with(L'\r')) line.pop_back();
  return Line{efi::narrow(line), false};
}

// The console has them.
void LineEditor::remember(const std::string&) {}

}  // namespace worksheet

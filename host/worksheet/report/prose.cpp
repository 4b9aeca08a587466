#include "host/worksheet/report/prose.hpp"

#include <string_view>
#include <utility>

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/worksheet/report/markup.hpp"

namespace worksheet {

namespace {

// Blanks behind the comment sign from which a line is a drawing.
constexpr std::size_t kDrawingIndent = 3;

// Text with its code marked.
std::string phrase_markup(std::string_view text) {
  std::string result;
  for (;;) {
    const std::size_t begin = text.find('`');
    const std::size_t end = begin == std::string_view::npos ? begin : text.find('`', begin + 1);
    if (end == std::string_view::npos) return result + escaped(text);
    result += fmt::format("{}<code>{}</code>", escaped(text.substr(0, begin)),
                          escaped(text.substr(begin + 1, end - begin - 1)));
    text.remove_prefix(end + 1);
  }
}

// Gathers lines into blocks.
class Prose {
 public:
  void add(std::string_view line) {
    line.remove_prefix(line.find('#') + 1);
    std::size_t rank = 1;
    for (; line.starts_with('#'); line.remove_prefix(1)) ++rank;
    const std::string_view words = trimmed(line);
    const std::size_t indent = line.find_first_not_of(' ');
    if (rank > 1 && !words.empty()) {
      flush();
      const std::size_t level = rank > 3 ? 3 : rank;
      text_ += fmt::format("<h{0}>{1}</h{0}>\n", level, phrase_markup(words));
    } else if (words.empty()) {
      if (block_ == Block::drawing)
        held_ += '\n';
      else
        flush();
    } else if (indent >= kDrawingIndent && block_ != Block::list) {
      begin(Block::drawing);
      held_.append(line).append("\n");
    } else if (words.starts_with("- ") && indent < kDrawingIndent) {
      if (block_ == Block::list) end_item();
      begin(Block::list);
      held_ = words.substr(2);
    } else {
      if (block_ != Block::list) begin(Block::paragraph);
      if (!held_.empty()) held_ += ' ';
      held_ += words;
    }
  }

  std::string take() {
    flush();
    return std::move(text_);
  }

 private:
  enum class Block { none, paragraph, list, drawing };

  void begin(Block block) {
    if (block_ == block) return;
    flush();
    block_ = block;
    if (block == Block::list) text_ += "<ul>\n";
  }
  void end_item() {
    text_ += fmt::format("<li>{}</li>\n", phrase_markup(std::exchange(held_, {})));
  }
  void flush() {
    if (block_ == Block::paragraph) text_ += fmt::format("<p>{}</p>\n", phrase_markup(held_));
    if (block_ == Block::list) {
      end_item();
      text_ += "</ul>\n";
    }
    if (block_ == Block::drawing) {
      held_.erase(held_.find_last_not_of('\n') + 1);
      text_ += fmt::format("<pre class=\"drawing\">{}</pre>\n", escaped(held_));
    }
    held_.clear();
    block_ = Block::none;
  }

  Block block_ = Block::none;
  std::string held_;
  std::string text_;
};

}  // namespace

bool is_comment_line(const std::string& line) {
  return trimmed(line).starts_with('#');
}

std::string prose_markup(std::span<const std::string> lines) {
  Prose prose;
  for (const std::string& line : lines) prose.add(line);
  return prose.take();
}

std::string heading_words(const std::string& line) {
  const std::string_view words = trimmed(line);
  return words.starts_with("## ") ? std::string(trimmed(words.substr(3))) : "";
}

}  // namespace worksheet

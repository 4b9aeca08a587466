#include "host/worksheet/engine/sheet_files.hpp"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "fmt/format.h"
#include "host/efiutils/system/paths.hpp"

namespace worksheet {

namespace {

namespace fs = std::filesystem;

// The path without links and dots; empty where that cannot be told.
fs::path resolved(const fs::path& path) {
  std::error_code failed;
  const fs::path whole = fs::weakly_canonical(fs::absolute(path, failed), failed);
  return failed ? fs::path() : whole;
}

bool lies_below(const fs::path& path, const std::string& root_path) {
  const fs::path root = efi::path_of(root_path);
  return std::mismatch(root.begin(), root.end(), path.begin(), path.end()).first == root.end();
}

[[noreturn]] void fail_to_read(const std::string& path, int error) {
  throw FileError(fmt::format("{}: cannot be read: {}", path, efi::file_error_words(error)));
}

}  // namespace

void SheetFiles::confine(const std::string& root) {
  root_ = efi::open_directory(root);
  if (root_.get() < 0) throw FileError(fmt::format("{}: {}", root, efi::file_error_words(errno)));
  root_path_ = efi::utf8_of(resolved(efi::path_of(root)));
}

std::string SheetFiles::path(const std::string& name) const {
  const bool at_root =
      root_.get() >= 0 && !lies_below(resolved(efi::path_of(directory)), root_path_);
  return efi::utf8_of(
      (efi::path_of(at_root ? root_path_ : directory) / efi::path_of(name)).lexically_normal());
}

// The name as a path from the root on, without links.
std::string SheetFiles::below_root(const std::string& name) const {
  const bool at_root = !lies_below(resolved(efi::path_of(directory)), root_path_);
  const fs::path whole =
      resolved(efi::path_of(at_root ? root_path_ : directory) / efi::path_of(name));
  if (whole.empty() || !lies_below(whole, root_path_))
    throw FileError(fmt::format("{}: lies outside of {}, to which the worksheet is confined", name,
                                root_path_));
  return efi::utf8_of(whole.lexically_relative(efi::path_of(root_path_)));
}

bool SheetFiles::may_list(const std::string& name) const try {
  if (root_.get() >= 0) below_root(name.empty() ? "." : name);
  return true;
} catch (const FileError&) {
  return false;
}

efi::Descriptor SheetFiles::open_below(const std::string& relative, efi::Opened what) const {
  return efi::open_beneath(root_, relative,
                           efi::utf8_of(efi::path_of(root_path_) / efi::path_of(relative)), what);
}

efi::Descriptor SheetFiles::open(const std::string& name) const {
  efi::Descriptor file = root_.get() >= 0 ? open_below(below_root(name), efi::Opened::file)
                                          : efi::open_to_read(path(name));
  const int error = file.get() < 0 ? errno : efi::file_error(file.get());
  if (error != 0) fail_to_read(path(name), error);
  return file;
}

std::string SheetFiles::read(const std::string& name) const {
  if (on_read && may_list(name)) on_read(path(name));
  const efi::Descriptor file = open(name);
  std::string content;
  if (const int error = efi::read_all(file.get(), content)) fail_to_read(path(name), error);
  return content;
}

efi::NewFile SheetFiles::create(const std::string& name) {
  if (on_read) written_.insert(path(name));
  if (root_.get() < 0) return efi::NewFile(path(name));
  const fs::path relative = efi::path_of(below_root(name));
  const fs::path parent = relative.has_parent_path() ? relative.parent_path() : ".";
  efi::Descriptor directory = open_below(efi::utf8_of(parent), efi::Opened::directory);
  if (directory.get() < 0) fail_to_write(name, errno);
  return efi::NewFile(std::move(directory), efi::utf8_of(relative.filename()));
}

void SheetFiles::fail_to_write(const std::string& name, int error) {
  output_lost_ = true;
  throw FileError(fmt::format("{} cannot be written: {}", name, efi::file_error_words(error)));
}

void SheetFiles::write(const std::string& name, std::string_view content) {
  efi::NewFile file = create(name);
  int error = file.error();
  if (error == 0) error = efi::write_all(file.descriptor(), content);
  if (error == 0) error = file.commit();
  if (error != 0) fail_to_write(name, error);
}

}  // namespace worksheet

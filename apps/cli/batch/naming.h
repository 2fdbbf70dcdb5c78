// Names of outputs, made from a template such as "{stem}-{page:03}.{ext}".
#pragma once

#include <string>
#include <vector>

namespace vorel::cli::batch {

struct InputFile;

class Naming {
 public:
  // What is wrong with a template, "" for nothing.
  static std::string wrong(const std::string& pattern);

  // The template is right. `to` names the format of all outputs, "" leaves each input its own.
  Naming(const std::string& pattern, std::string to);

  // Each page goes to a file of its own.
  bool has_page() const { return has_page_; }

  // The output's path below the output folder, with slashes. Throws Failure if the input gives none.
  std::string name_for(const InputFile& input, size_t page, size_t pages) const;

  // The same with a mark in place of page and pages: what two inputs must not have in common.
  std::string mark_for(const InputFile& input) const;

 private:
  struct Part {
    std::string field;  // "" for text as it is
    std::string text;
    size_t width = 0;
  };
  static std::vector<Part> parts_of(const std::string& pattern, std::string& wrong);
  std::string value_of(const Part& part, const InputFile& input, const std::string& page, const std::string& pages) const;
  std::string expanded(const InputFile& input, const std::string& page, const std::string& pages) const;

  std::vector<Part> parts_;
  std::string to_;
  bool has_page_ = false;
};

inline constexpr const char* kUsualName = "{dir}/{stem}.{ext}";

}  // namespace vorel::cli::batch

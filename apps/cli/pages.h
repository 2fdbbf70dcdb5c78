// The pages that verbs read, and the files that they write them to. One page is in memory at a time.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/files.h"
#include "cli/saving_options.h"
#include "cli/step.h"
#include "cli/verb.h"
#include "common/operations.h"

namespace vorel::cli {

// The option of verbs that read pages. Help says whose pages.
void declare_pages(Arguments& arguments, std::string& pages, const std::string& whose = "IN");

// Throws Failure if more than one input is standard input.
void require_one_standard_input(const std::vector<std::string>& inputs);

// The chosen pages of an input: all of them for an empty list. Throws Failure.
class Source {
 public:
  Source(const std::string& name, const std::string& pages, const Streams& streams);

  const Input& input() const { return input_; }
  size_t size() const { return pages_.size(); }
  bool leaves_pages_out() const { return leaves_pages_out_; }

  // How messages name a chosen page, counted from 0.
  std::string label(size_t index) const;
  // Nothing is decoded of a page that states to be too large. Throws Failure.
  Page load(size_t index, const Limits& limits = {}) const;

 private:
  Input input_;
  bool has_pages_ = false;  // several
  bool leaves_pages_out_ = false;
  std::vector<int> pages_;
};

// Where pages go: a file, the pages of a file, or numbered files.
class Target {
 public:
  // Throws Failure if name and options do not go together. Unfinished files are beside the target, or in a given folder of
  // its file system.
  Target(std::string name, const SavingOptions& options, const Streams& streams, std::filesystem::path scratch = {});

  // Looks at the files to be written before any work goes into them: throws Failure if they cannot hold so many pages, or
  // may not be replaced. A source may only be replaced if all its pages are taken.
  void open(size_t pages, std::initializer_list<const Source*> sources);

  bool is_standard_output() const { return name_ == "-"; }
  bool replaces(const Source& source) const;
  bool is_same_as(const Target& other) const;

  // Takes the pages that `produce` puts, in order: their pictures are moved, and what saving loses is added to them and
  // noted. Dropped pages are left out, and numbers count them. A file is put in place when it has all its pages; one without
  // pages is not made. Throws Failure, and whatever `produce` throws.
  using Put = std::function<void(Page& page)>;
  void write(const std::function<void(const Put& put)>& produce) const;

 private:
  void write_numbered(const std::function<void(const Put& put)>& produce) const;
  void save(const Output& output, const std::string& path, Page& page, int number) const;
  void note_losses(Page& page) const;

  std::string name_;
  const Streams& streams_;
  bool overwrite_, is_numbered_, is_strict_;
  programs::Saving saving_;
  std::filesystem::path scratch_;
  std::vector<std::unique_ptr<Output>> outputs_;
};

// "page.tif" and 7 of 12 give "page-07.tif".
std::string numbered(const std::string& name, size_t page, size_t pages);

}  // namespace vorel::cli

#include "cli/batch/inputs.h"

#include <algorithm>
#include <fmt/format.h>
#include <istream>
#include <iterator>
#include <span>
#include <unordered_set>

#include "cli/batch/patterns.h"
#include "cli/failure.h"
#include "cli/files.h"
#include "common/formats.h"

namespace vorel::cli::batch {
namespace fs = std::filesystem;
namespace {

std::string joined(const std::string& folder, const std::string& name) {
  return folder.empty() ? name : folder + "/" + name;
}

bool is_hidden(const std::string& name) { return name.starts_with('.'); }

bool is_folder(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

class Search {
 public:
  explicit Search(const Wanted& wanted) : wanted_(wanted) {}

  void add_named(const std::string& name) {
    if (is_folder(path_of(name))) {
      add_folder(path_of(name), "", name);
    } else if (has_wildcard(name) && !exists(path_of(name))) {
      add_matches(name);
    } else {
      add(path_of(name), name_of(path_of(name).filename()), name);
    }
  }

  // Lists name files below one folder, as a rule, and keep the folders between.
  void add_listed(const std::string& name) {
    const fs::path path = path_of(name), plain = path.lexically_normal().relative_path();
    if (is_folder(path)) return add_folder(path, "", name);
    const bool leads_up = plain.begin() != plain.end() && *plain.begin() == "..";
    add(path, name_of(leads_up ? path.filename() : plain), name);
  }

  Inputs found() {
    for (size_t i = 0; i < inputs_.files.size(); ++i) inputs_.files[i].index = i + 1;
    return std::move(inputs_);
  }

 private:
  static bool exists(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(path, ignored));
  }

  bool is_output(const fs::path& folder) const {
    std::error_code ignored;
    return fs::equivalent(folder, wanted_.output, ignored);
  }

  // Files of one name below different folders are different inputs.
  void add(const fs::path& path, const std::string& id, const std::string& shown) {
    std::error_code ignored;
    if (!seen_.insert(fs::absolute(path, ignored).lexically_normal().native()).second) return;
    std::string key = id;
    for (int number = 2; !keys_.insert(key).second; ++number) key = fmt::format("{} ({})", id, number);
    inputs_.files.push_back({path, id, std::move(key), shown});
  }

  struct Entry {
    std::string name;
    bool is_folder;
  };

  // In the order of their names. A folder that cannot be read is an input that fails.
  std::vector<Entry> entries_of(const fs::path& folder, const std::string& id, const std::string& shown) {
    std::vector<Entry> entries;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
      std::error_code ignored;
      const bool is_inner = entry->is_directory(ignored);
      entries.push_back({name_of(entry->path().filename()), is_inner});
    }
    if (error) add(folder, id.empty() ? name_of(folder.filename()) : id, shown);
    std::ranges::sort(entries, {}, &Entry::name);
    return entries;
  }

  void add_folder(const fs::path& folder, const std::string& id, const std::string& shown) {
    if (is_output(folder)) {
      if (!id.empty()) return;
      throw Failure(ExitCode::kWrongUse, shown, "this is the output folder itself; give --out another one");
    }
    for (const Entry& entry : entries_of(folder, id, shown)) {
      if (is_hidden(entry.name)) continue;
      const fs::path path = folder / path_of(entry.name);
      const std::string inner_id = joined(id, entry.name), inner_shown = name_of(path);
      if (entry.is_folder) {
        if (wanted_.is_recursive && !is_link(path)) add_folder(path, inner_id, inner_shown);
      } else if (programs::picture_format_for_name(entry.name) != nullptr) {
        add(path, inner_id, inner_shown);
      } else {
        ++inputs_.others;
      }
    }
  }

  // Links to folders may lead back.
  static bool is_link(const fs::path& path) {
    std::error_code ignored;
    return fs::is_symlink(fs::symlink_status(path, ignored));
  }

  void add_matches(const std::string& text) {
    const Pattern pattern = pattern_of(text);
    has_match_ = false;
    add_matches(path_of(pattern.folder), "", pattern.below);
    if (!has_match_) throw Failure(ExitCode::kInput, text, "no file matches this pattern; check it, and put it in quotes");
  }

  void add_matches(const fs::path& folder, const std::string& id, std::span<const std::string> below) {
    const bool is_last = below.size() == 1;
    const bool any_depth = below.front() == "**" && !is_last;
    if (any_depth) add_matches(folder, id, below.subspan(1));
    for (const Entry& entry : entries_of(folder.empty() ? "." : folder, id, name_of(folder))) {
      if (is_hidden(entry.name) && !is_hidden(below.front())) continue;
      if (!matches(below.front(), entry.name)) continue;
      const fs::path path = folder / path_of(entry.name);
      const std::string inner_id = joined(id, entry.name);
      if (entry.is_folder) {
        if (!is_last && !is_output(path)) add_matches(path, inner_id, any_depth ? below : below.subspan(1));
      } else if (is_last) {
        has_match_ = true;
        add(path, inner_id, name_of(path));
      }
    }
  }

  const Wanted& wanted_;
  Inputs inputs_;
  bool has_match_ = false;
  std::unordered_set<fs::path::string_type> seen_;
  std::unordered_set<std::string> keys_;
};

std::string text_in(const std::string& list, std::istream& standard_input) {
  if (list == "-") return {std::istreambuf_iterator<char>(standard_input), {}};
  if (auto text = contents_of(list)) return *std::move(text);
  throw Failure(ExitCode::kInput, list, "the list of files cannot be read; check its name");
}

std::vector<std::string> names_in(const std::string& text, bool ends_with_zero) {
  const char end = ends_with_zero ? '\0' : '\n';
  std::vector<std::string> names;
  for (size_t at = 0; at < text.size();) {
    const size_t stop = std::min(text.find(end, at), text.size());
    std::string name = text.substr(at, stop - at);
    if (!ends_with_zero && name.ends_with('\r')) name.pop_back();
    if (!name.empty()) names.push_back(std::move(name));
    at = stop + 1;
  }
  return names;
}

}  // namespace

std::string InputFile::folder() const {
  const size_t slash = id.rfind('/');
  return slash == std::string::npos ? "" : id.substr(0, slash);
}

std::string InputFile::name() const { return id.substr(id.rfind('/') + 1); }  // npos + 1 is 0

std::string InputFile::stem() const {
  const std::string whole = name();
  const size_t dot = whole.rfind('.');
  return dot == std::string::npos || dot == 0 ? whole : whole.substr(0, dot);
}

Inputs find_inputs(const Wanted& wanted, std::istream& standard_input) {
  Search search(wanted);
  for (const std::string& name : wanted.names) search.add_named(name);
  if (!wanted.list.empty())
    for (const std::string& name : names_in(text_in(wanted.list, standard_input), wanted.ends_with_zero))
      search.add_listed(name);
  return search.found();
}

}  // namespace vorel::cli::batch

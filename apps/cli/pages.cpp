#include "cli/pages.h"

#include <algorithm>
#include <fmt/format.h>

#include "common/losses.h"
#include "common/page_range.h"

namespace vorel::cli {
namespace {

// A module that does not count pages may have any of these.
constexpr int kMostUncountedPages = 65'535;

std::optional<int> total_pages(const Input& input, const std::string& pages) {
  const auto total = about(input.label(), [&] { return input.file().count_pages(); });
  if (total || !pages.empty()) return total;
  throw Failure(ExitCode::kModule, input.label(),
                "the codec module of this format does not count pages; name some with --page, or put this version's module "
                "beside the library");
}

bool is_number(const std::string& text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

std::vector<int> chosen_pages(const Input& input, const std::string& list, int total) {
  if (auto pages = programs::parse_page_range(list, total)) return *pages;
  const std::string has = fmt::format("the file has {} page{}", total, total == 1 ? "" : "s");
  throw Failure(ExitCode::kWrongUse, input.label(),
                is_number(list) ? fmt::format("there is no page {}; {}", list, has)
                                : fmt::format("\"{}\" does not list pages of it, as 1-3,5 does; {}", list, has));
}

// TGA files are known by their names.
std::string scratch_ending(const programs::Saving& saving) { return saving.format->code == FormatCode::kTga ? ".tga" : ""; }

}  // namespace

void declare_pages(Arguments& arguments, std::string& pages, const std::string& whose) {
  arguments.option("--page", pages, "LIST",
                   fmt::format("pages of {}, counted from 1, such as 2 or 1-3,5 or 4- (default: all)", whose));
}

void require_one_standard_input(const std::vector<std::string>& inputs) {
  if (std::ranges::count(inputs, "-") > 1)
    throw Failure(ExitCode::kWrongUse, "standard input", "it can be read once only; give the other picture by name");
}

Source::Source(const std::string& name, const std::string& pages, const Streams& streams) : input_(name, streams.input) {
  const std::optional<int> total = total_pages(input_, pages);
  has_pages_ = total != 1;
  pages_ = chosen_pages(input_, pages, total.value_or(kMostUncountedPages));
  std::vector<int> distinct = pages_;
  std::ranges::sort(distinct);
  distinct.erase(std::ranges::unique(distinct).begin(), distinct.end());
  leaves_pages_out_ = total && distinct.size() < static_cast<size_t>(*total);
}

std::string Source::label(size_t index) const {
  return has_pages_ ? fmt::format("{}, page {}", input_.label(), pages_[index]) : input_.label();
}

Page Source::load(size_t index, const Limits& limits) const {
  const std::string name = label(index);
  const int number = pages_[index];
  return about(name, [&] {
    const programs::PictureFile& file = input_.file();
    const auto stated = limits.are_set() ? file.stated_header(number) : std::nullopt;
    if (stated) limits.check(*stated);
    Page page{.label = name, .picture = file.load(number), .limits = limits, .losses = file.losses(number)};
    limits.check(page.picture.header());
    return page;
  });
}

Target::Target(std::string name, const SavingOptions& options, const Streams& streams, std::filesystem::path scratch)
    : name_(std::move(name)),
      streams_(streams),
      overwrite_(options.overwrite),
      is_numbered_(options.numbered),
      is_strict_(options.is_strict),
      saving_(options.saving_for(name_)),
      scratch_(std::move(scratch)) {
  if (is_numbered_ && is_standard_output())
    throw Failure(ExitCode::kWrongUse, name_, "numbered pages go to files of their own; give OUT a name");
}

void Target::open(size_t pages, std::initializer_list<const Source*> sources) {
  if (pages > 1 && !is_numbered_ && !saving_.format->holds_pages) {
    throw Failure(ExitCode::kWrongUse, name_,
                  fmt::format("{} pages do not go into one {} file; choose one with --page, write a file for each with "
                              "--numbered, or make a TIFF file",
                              pages, saving_.format->name));
  }
  outputs_.clear();
  for (size_t i = 0; i < (is_numbered_ ? pages : 1); ++i) {
    const std::string name = is_numbered_ ? numbered(name_, i + 1, pages) : name_;
    outputs_.push_back(std::make_unique<Output>(name, overwrite_, streams_.output, scratch_));
  }
  for (const Source* source : sources) {
    if (!source->leaves_pages_out() || !replaces(*source)) continue;
    throw Failure(ExitCode::kWrongUse, source->input().label(),
                  "the file has more pages than those chosen, which would take the place of all; give OUT another name");
  }
}

bool Target::replaces(const Source& source) const {
  return std::ranges::any_of(outputs_, [&](const auto& output) { return output->replaces(source.input()); });
}

bool Target::is_same_as(const Target& other) const {
  return std::ranges::any_of(outputs_, [&](const auto& output) {
    return std::ranges::any_of(other.outputs_, [&](const auto& theirs) { return output->is_same_as(*theirs); });
  });
}

void Target::note_losses(Page& page) const {
  for (std::string& loss : programs::losses_when_saved(page.picture, saving_)) page.losses.push_back(std::move(loss));
  for (const std::string& loss : page.losses) {
    if (is_strict_) throw Failure(ExitCode::kFormat, page.label, loss + ", or leave --strict out");
    print_note(streams_.errors, page.label + ": " + loss);
  }
}

void Target::save(const Output& output, const std::string& path, Page& page, int number) const {
  note_losses(page);
  const auto picture = about(page.label, [&] { return programs::suited(std::move(page.picture), saving_); });
  about(output.label(), [&] { programs::save_page(path, picture, saving_, number); });
}

void Target::write_numbered(const std::function<void(const Put& put)>& produce) const {
  size_t index = 0;
  produce([&](Page& page) {
    const Output& output = *outputs_.at(index++);
    if (page.is_dropped) return;
    output.write(scratch_ending(saving_), [&](const std::string& path) { save(output, path, page, 1); });
  });
}

void Target::write(const std::function<void(const Put& put)>& produce) const {
  struct NothingToWrite {};
  if (is_numbered_) return write_numbered(produce);
  const Output& output = *outputs_.front();
  try {
    output.write(scratch_ending(saving_), [&](const std::string& path) {
      int number = 0;
      produce([&](Page& page) {
        if (!page.is_dropped) save(output, path, page, ++number);
      });
      if (number == 0) throw NothingToWrite{};
    });
  } catch (const NothingToWrite&) {
    print_note(streams_.errors, output.label() + ": all pages are left out; the file is not written");
  }
}

std::string numbered(const std::string& name, size_t page, size_t pages) {
  const size_t dot = name.find_last_of("./\\");
  const size_t end = dot != std::string::npos && name[dot] == '.' ? dot : name.size();
  const auto digits = std::to_string(pages).size();
  return fmt::format("{}-{:0{}}{}", name.substr(0, end), page, digits, name.substr(end));
}

}  // namespace vorel::cli

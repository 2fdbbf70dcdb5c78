#include "cli/batch/worker.h"

#include <fmt/format.h>
#include <istream>
#include <limits>
#include <ostream>

#include "cli/failure.h"
#include "cli/parser.h"

namespace vorel::cli::batch {
namespace {

Message message_of(const Orders& orders) {
  Message message = {orders.steps, name_of(orders.places.output), name_of(orders.places.scratch)};
  message.insert(message.end(), orders.options.begin(), orders.options.end());
  return message;
}

Task task_of(const Message& message) {
  Parser parser("batch", "", Parser::Help::kNever);
  Settings settings;
  Arguments arguments = parser.arguments();
  settings.declare(arguments);
  parser.parse({message.begin() + 3, message.end()});
  if (settings.most_memory.empty())
    keep_memory();
  else
    limit_memory(settings.limits().bytes);
  return {Chain::parse(message.at(0)), settings, {path_of(message.at(1)), path_of(message.at(2))}};
}

Message message_of(const InputFile& input, bool may_replace) {
  return {name_of(input.path), input.id, input.shown, std::to_string(input.index), may_replace ? "1" : ""};
}

InputFile input_of(const Message& message) {
  return {path_of(message.at(0)), message.at(1), message.at(1), message.at(2), std::stoul(message.at(3))};
}

Message message_of(const Outcome& outcome) {
  Message message = {std::to_string(static_cast<int>(outcome.code)), outcome.message, outcome.pages,
                     std::to_string(outcome.page_count), std::to_string(outcome.outputs.size())};
  for (const PlacedFile& file : outcome.outputs) {
    message.push_back(file.name);
    message.push_back(std::to_string(file.bytes));
  }
  message.insert(message.end(), outcome.losses.begin(), outcome.losses.end());
  return message;
}

Outcome outcome_of(const Message& message) {
  Outcome outcome{
      static_cast<ExitCode>(std::stoi(message.at(0))), message.at(1), message.at(2), std::stoull(message.at(3)), {}};
  size_t at = 5;
  for (auto count = std::stoull(message.at(4)); count > 0; --count, at += 2)
    outcome.outputs.push_back({message.at(at), std::stoull(message.at(at + 1))});
  outcome.losses.assign(message.begin() + static_cast<std::ptrdiff_t>(at), message.end());
  return outcome;
}

}  // namespace

void Worker::start() {
  try {
    process_ = std::make_unique<WorkerProcess>();
  } catch (const std::system_error& error) {
    throw Failure(ExitCode::kLimit, "batch",
                  fmt::format("a worker process cannot be started ({}); use fewer --jobs, and go on with --resume",
                              error.code().message()));
  }
}

std::optional<Outcome> Worker::answer(const InputFile& input, bool may_replace) {
  if (process_ == nullptr) {
    start();
    if (!process_->send(packed(message_of(orders_)))) return std::nullopt;
  }
  if (!process_->send(packed(message_of(input, may_replace)))) return std::nullopt;
  try {
    const auto reply = receive_message([this](std::span<char> bytes) { return process_->receive(bytes); });
    return reply ? std::optional(outcome_of(*reply)) : std::nullopt;
  } catch (const std::exception&) {  // a damaged reply counts as none
    return std::nullopt;
  }
}

Outcome Worker::work_on(const InputFile& input, bool may_replace) {
  if (auto outcome = answer(input, may_replace)) return *outcome;
  const std::string how = process_->end();
  process_.reset();
  Outcome outcome;
  outcome.code = ExitCode::kLimit;
  outcome.message = fmt::format(
      "{}: the process that worked on it ended ({}); the file may be hostile, or memory short: try it with \"vorel run\"",
      input.shown, how);
  return outcome;
}

void serve(std::istream& requests, std::ostream& replies) {
  end_with_parent();
  const auto next = [&] {
    return receive_message([&](std::span<char> bytes) {
      return static_cast<bool>(requests.read(bytes.data(), static_cast<std::streamsize>(bytes.size())));
    });
  };
  const auto orders = next();
  if (!orders) return;
  const Task task = task_of(*orders);
  while (const auto request = next()) {
    const std::string reply = packed(message_of(task.work_on(input_of(*request), !request->at(4).empty())));
    if (!replies.write(reply.data(), static_cast<std::streamsize>(reply.size())).flush()) return;
  }
}

}  // namespace vorel::cli::batch

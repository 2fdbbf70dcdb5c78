#include "viewer/operation_preview.h"

#include <mutex>
#include <new>
#include <utility>

#include "viewer/failure.h"

namespace vorel::viewer {
namespace {

OperationPreview::Result made_with(const std::string& step, const Numbers& numbers, const ShownPicture& picture) {
  try {
    Outcome outcome = run_steps(step, picture.picture);
    const SharedPicture shown = share(std::move(outcome.picture));
    shown->reductions();
    return {numbers, shown, outcome.report};
  } catch (const Failure& failure) {
    return {numbers, nullptr, failure.text()};
  } catch (const std::bad_alloc&) {
    return {numbers, nullptr, L"There is not enough memory"};
  }
}

}  // namespace

// Shared with work that may end after the dialog.
struct OperationPreview::Making {
  void put(Result made) {
    const std::lock_guard lock(mutex);
    result = std::move(made);
  }
  std::optional<Result> get() const {
    const std::lock_guard lock(mutex);
    return result;
  }

 private:
  mutable std::mutex mutex;
  std::optional<Result> result;
};

OperationPreview::OperationPreview(const Operation& operation, SharedPicture picture, WorkQueue& queue,
                                   std::function<void(const SharedPicture&)> show)
    : operation_(operation),
      picture_(std::move(picture)),
      queue_(queue),
      show_(std::move(show)),
      making_(std::make_shared<Making>()) {}

void OperationPreview::begin(const Numbers& numbers, HWND dialog, UINT message) {
  queue_.drop(WorkQueue::Urgency::kNow);  // with older numbers
  queue_.add(WorkQueue::Urgency::kNow,
             [step = step_of(operation_, numbers), numbers, picture = picture_, making = making_, dialog, message] {
               making->put(made_with(step, numbers, *picture));
               PostMessageW(dialog, message, 0, 0);
             });
}

std::wstring OperationPreview::show() {
  const auto result = making_->get();
  if (!result) return {};
  show_(result->picture ? result->picture : picture_);
  return result->report;
}

std::optional<OperationPreview::Result> OperationPreview::made(const Numbers& numbers) const {
  auto result = making_->get();
  return result && result->picture && result->numbers == numbers ? result : std::nullopt;
}

}  // namespace vorel::viewer

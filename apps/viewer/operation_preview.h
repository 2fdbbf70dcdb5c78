// An operation on the picture on view, shown with the numbers that are being entered.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "viewer/logic/work_queue.h"
#include "viewer/operations.h"
#include "viewer/shown_picture.h"

namespace vorel::viewer {

class OperationPreview : public NumberPreview {
 public:
  struct Result {
    Numbers numbers;
    SharedPicture picture;  // null where there is a reason why it is not done
    std::wstring report;    // or the reason
  };

  // `show` shows a picture.
  OperationPreview(const Operation& operation, SharedPicture picture, WorkQueue& queue,
                   std::function<void(const SharedPicture&)> show);

  void begin(const Numbers& numbers, HWND dialog, UINT message) override;
  std::wstring show() override;

  // What was made with these numbers, if it was.
  std::optional<Result> made(const Numbers& numbers) const;

 private:
  struct Making;

  const Operation& operation_;
  SharedPicture picture_;
  WorkQueue& queue_;
  std::function<void(const SharedPicture&)> show_;
  std::shared_ptr<Making> making_;
};

}  // namespace vorel::viewer

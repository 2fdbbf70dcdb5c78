#include "frame/thread_context.h"

#include <algorithm>
#include <iterator>

#include "platform/thread_slot.h"
#include "platform/win32.h"

namespace vorel {
namespace {

constexpr int32_t kFirstScaleSteps[kScaleTableWords] = {5, 10, 20, 40, 60, 80};
constexpr int32_t kSecondScaleSteps[kScaleTableWords] = {5, 10, 15, 30, 40, 50};
constexpr int32_t kBaseScale = 10;
constexpr int32_t kSetting = 4;

bool attached = false;
bool detached = false;

void create_context() {
  HGLOBAL block = GlobalAlloc(GPTR, sizeof(ImgThreadContext));
  if (block == nullptr) thread_slot::end_thread();
  if (!thread_slot::set(block)) {
    GlobalFree(block);
    thread_slot::end_thread();
  }
  auto& context = *static_cast<ImgThreadContext*>(block);  // a fixed block's handle is its address
  std::copy(std::begin(kFirstScaleSteps), std::end(kFirstScaleSteps), context.first_scale_steps);
  std::copy(std::begin(kSecondScaleSteps), std::end(kSecondScaleSteps), context.second_scale_steps);
  context.base_scale = kBaseScale;
  context.setting = kSetting;
}

void free_context() {
  HGLOBAL block = thread_slot::get();
  if (block == nullptr) return;
  thread_slot::set(nullptr);
  GlobalFree(static_cast<ImgThreadContext*>(block)->printer_settings.device_mode);
  GlobalFree(block);
}

// Sets a flag and tells whether the notice it stands for is to be followed.
bool first_notice(bool& flag, bool repeats_notices) {
  const bool refused = repeats_notices && flag;
  flag = true;
  return !refused;
}

}  // namespace

ImgThreadContext& thread_context() {
  if (thread_slot::get() == nullptr) create_context();
  return *static_cast<ImgThreadContext*>(thread_slot::get());
}

void set_thread_error(Error error) {
  if (error != Error::kUnreported) thread_context().error_code = static_cast<int32_t>(error);
}

bool follow_module_notice(ModuleNotice notice, bool repeats_notices) {
  switch (notice) {
    case ModuleNotice::kProcessAttach: return first_notice(attached, repeats_notices) && thread_slot::create();
    case ModuleNotice::kThreadAttach: create_context(); return true;
    case ModuleNotice::kThreadDetach: free_context(); return true;
    case ModuleNotice::kProcessDetach:
      if (!first_notice(detached, repeats_notices)) return false;
      free_context();
      thread_slot::destroy();
      return true;
  }
  return false;
}

}  // namespace vorel

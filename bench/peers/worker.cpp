// The driver's lines and the answers to them:
//   prepare NAME FILE ...   "ready", "none" or "failed"; the rest of the line describes the workload for participants in other languages
//   run COUNT               "done" or "failed"
#include "peers/worker.h"

#include <exception>
#include <iostream>
#include <sstream>

namespace {

peers::Work work;

std::string prepared(std::istringstream& line) {
  std::string name, file;
  line >> name >> file;
  work = nullptr;
  const peers::Workload* workload = peers::find_workload(name);
  if (workload == nullptr) return "none";
  const peers::Picture picture{workload->source, peers::read_file(file)};
  const std::string scratch = file + ".bmp";
  if (workload->operation == peers::Operation::kLoad) peers::write_file(scratch, peers::bitmap_file(picture));
  work = peers::prepare(*workload, picture, scratch);
  return work ? "ready" : "none";
}

std::string run(std::istringstream& line) {
  int count = 0;
  line >> count;
  for (int i = 0; i < count; ++i)
    if (!work()) return "failed";
  return "done";
}

}  // namespace

int main() {
  for (std::string text; std::getline(std::cin, text);) {
    std::istringstream line(text);
    std::string verb, answer;
    line >> verb;
    try {
      answer = verb == "prepare" ? prepared(line) : run(line);
    } catch (const std::exception& error) {
      std::cerr << text << ": " << error.what() << '\n';
      answer = "failed";
    }
    std::cout << answer << std::endl;
  }
}

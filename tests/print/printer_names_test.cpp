// The texts that name printers.
#include "print/printer_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vorel;
using namespace vorel::print;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string text_of(const PrinterDevice& device) { return device.name + "|" + device.driver + "|" + device.port; }

TEST(DefaultPrinter, IsNameDriverAndPort) {
  EXPECT_EQ(text_of(parse_device("My, printer")), "My| printer|");
  EXPECT_EQ(text_of(parse_device("Laser=1,winspool,Ne00:,x")), "Laser=1|winspool|Ne00:,x");
  EXPECT_EQ(text_of(parse_device("Laser")), "Laser||");
  EXPECT_EQ(text_of(parse_device("")), "||");
}

TEST(ListEntries, AreOneForEachPort) {
  EXPECT_THAT(list_entries("Laser", "HPPCL,LPT1:,FILE:", ""),
              ElementsAre("Laser on LPT1:\tLaser=HPPCL,LPT1:", "Laser on FILE:\tLaser=HPPCL,FILE:"));
  EXPECT_THAT(list_entries("Laser", "HPPCL,LPT1:,none,FILE:", "None"),
              ElementsAre("Laser on LPT1:\tLaser=HPPCL,LPT1:", "Laser on FILE:\tLaser=HPPCL,FILE:"));
  EXPECT_THAT(list_entries("Laser", "HPPCL,,FILE:,", ""), ElementsAre("Laser on FILE:\tLaser=HPPCL,FILE:"));
  for (const char* without_port : {"", "HPPCL", "HPPCL,"})
    EXPECT_THAT(list_entries("Laser", without_port, ""), IsEmpty()) << without_port;
}

TEST(HiddenParts, NameTheDeviceAndItsDriver) {
  const std::string entry = list_entries("Laser", "HPPCL,LPT1:", "")[0];
  EXPECT_EQ(device_text(entry), "Laser,HPPCL,LPT1:");
  EXPECT_EQ(device_text("seen\tA=b=c\td,e"), "A,b,cd,e");
  EXPECT_EQ(device_text("without a tab"), "");
  EXPECT_EQ(text_of(device_of(entry)), "Laser|HPPCL.DRV|LPT1:");
  EXPECT_EQ(text_of(device_of("x\tLaser=wineps.drv,/a,b")), "Laser|wineps.drv|/a,b");
  EXPECT_EQ(text_of(device_of("x\tLaser,HPPCL,LPT1:")), "Laser|HPPCL.DRV|LPT1:");
}

}  // namespace

// Errors, version and settings.
#include "examples.h"

static int img_error(HGLOBAL dib) {
  (void)dib;
  //! [ImgError]
  HGLOBAL scan = LoadDIBFromFile("missing.bmp");
  if (scan == NULL) {
    int code = ImgError();  // says why, until this thread fails again
    if (code == IMG_E_OPEN_FILE)
      puts("There is no such file.");
    else
      printf("The file cannot be loaded (%d).\n", code);
  }
  //! [ImgError]
  EXPECT(scan == NULL && ImgError() == IMG_E_OPEN_FILE);
  return 0;
}

static int set_img_error(HGLOBAL dib) {
  //! [SetImgError]
  int before = SetImgError(IMG_OK);  // a code found later is a new one
  HGLOBAL turned = RotateDIB90(dib);
  if (turned == NULL && ImgError() == IMG_OK) puts("not turned, and no reason given");
  GlobalFree(turned);
  int code = SetImgError(before);  // for those who read the older code
  //! [SetImgError]
  EXPECT(turned != NULL && code == IMG_OK && SetImgError(IMG_OK) == before);
  return 0;
}

static int img_error_string(HGLOBAL dib) {
  //! [ImgErrorString]
  char why[IMG_MESSAGE_BYTES] = "";
  if (!SaveDIB("no such folder/picture.bmp", dib)) printf("The picture is not saved: %s\n", ImgErrorString(why, ImgError()));
  //! [ImgErrorString]
  EXPECT(strcmp(why, "Can't open file") == 0);
  return 0;
}

static int get_image_version(HGLOBAL dib) {
  (void)dib;
  //! [GetImageVersion]
  char version[13];  // holds the whole text
  GetImageVersion(version, sizeof version);
  if (strcmp(version, "Version 5.59") < 0) puts("This program needs version 5.59 of the library.");
  //! [GetImageVersion]
  EXPECT(strcmp(version, "Version 5.59") == 0);
  return 0;
}

static int set_scale_steps(HGLOBAL dib) {
  (void)dib;
  //! [BZoomSetScaleSteps]
  // 1, 1 1/2, 2, 3, 4 and 8 times as large; 1/2, 1/4 and 1/8 as large. A ratio of 1 is 10 : 10.
  int enlarge[IMG_ZOOM_TABLE_ENTRIES] = {6, 10, 15, 20, 30, 40, 80};
  int reduce[IMG_ZOOM_TABLE_ENTRIES] = {4, 10, 20, 40, 80};
  if (!BZoomSetScaleSteps(10, enlarge, reduce)) puts("The steps do not increase from the base.");
  //! [BZoomSetScaleSteps]
  int stored[IMG_ZOOM_TABLE_ENTRIES];
  EXPECT(BZoomGetScaleSteps(stored, NULL) == 10 && memcmp(stored, enlarge, sizeof stored) == 0);
  return 0;
}

static int get_scale_steps(HGLOBAL dib) {
  (void)dib;
  const int steps[IMG_ZOOM_TABLE_ENTRIES] = {3, 10, 20, 70};
  BZoomSetScaleSteps(10, steps, steps);
  //! [BZoomGetScaleSteps]
  int enlarge[IMG_ZOOM_TABLE_ENTRIES];
  int base = BZoomGetScaleSteps(enlarge, NULL);
  int largest = enlarge[enlarge[0]];  // the first entry is the number of steps
  printf("zoom up to %d %%\n", 100 * largest / base);
  //! [BZoomGetScaleSteps]
  EXPECT(base == 10 && largest == 70);
  return 0;
}

const Example kLibraryExamples[] = {
    {"ImgError", 1, img_error},
    {"SetImgError", 1, set_img_error},
    {"ImgErrorString", 1, img_error_string},
    {"GetImageVersion", 1, get_image_version},
    {"BZoomSetScaleSteps", 1, set_scale_steps},
    {"BZoomGetScaleSteps", 1, get_scale_steps},
    {NULL, 0, NULL},
};

// Numbers of what is in viewer.rc.
#pragma once

#define IDI_VIEWER 1
#define IDD_NUMBERS 100
#define IDC_FIRST_LABEL 101
#define IDC_FIRST_EDIT 111
#define IDC_FIRST_RANGE 121

#define IDD_PRINT 200
#define IDD_PREVIEW 201
#define IDC_PRINTERS 210
#define IDC_PROPERTIES 211
#define IDC_PAGES 212
#define IDC_PAGES_HINT 213
#define IDC_COPIES 214
#define IDC_TRUE_SIZE 220
#define IDC_FIT 221
#define IDC_STRETCH 222
#define IDC_ACROSS 223
#define IDC_DOWN 224
#define IDC_BY_RESOLUTION 225
#define IDC_PREVIOUS_PAGE 230
#define IDC_NEXT_PAGE 231
#define IDC_FACTS 232
#define IDC_PAGE 233

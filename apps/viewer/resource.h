// Numbers of what is in viewer.rc.
#pragma once

#define IDI_VIEWER 1
#define IDD_NUMBERS 100
#define IDC_FIRST_LABEL 101
#define IDC_FIRST_EDIT 111
#define IDC_FIRST_RANGE 121

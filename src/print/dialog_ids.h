/* The dialogs' controls and messages, for code and resources alike. Callers have templates of their own: the numbers stay. */
#pragma once

/* "PRINTPAGE" */
#define IDC_PRINTERS 1000
#define IDC_COPIES 116
#define IDC_FIT 117
#define IDC_STRETCH 118
#define IDC_CENTER_HORIZONTALLY 119
#define IDC_CENTER_VERTICALLY 120
#define IDC_SHOW_PAGES 122
#define IDC_IMAGE_DPI 500

/* "PRINTPAGE" and "PRINTCANCELDLGBOX" */
#define IDC_DOCUMENT 121

/* "PRINTERSETUP" */
#define IDC_SETUP 115
#define IDC_DEVICES 122

#define WM_SHOW_PROGRESS (WM_USER + 1000) /* lParam: the text */
#define WM_FILL_DEVICES (WM_USER + 300)
#define WM_SELECT_DEFAULT (WM_USER + 301)

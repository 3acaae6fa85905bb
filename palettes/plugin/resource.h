// Numbers of the dialogs of the plug-in, for C++ and the resource compiler.
#pragma once

#define IDD_PALETTE_PANEL 101
#define IDD_PALETTES 102
#define IDD_LOOK 103

#define IDC_OPEN_PALETTES 1001
#define IDC_OPEN_LOOK 1002

#define IDC_DATABASE_LABEL 1101
#define IDC_DATABASE 1102
#define IDC_SEARCH_LABEL 1103
#define IDC_SEARCH 1104
#define IDC_UNUSED 1105
#define IDC_TABS 1106
#define IDC_ENTRIES 1107
#define IDC_SWATCHES 1108
#define IDC_INTENSITY 1109
#define IDC_FIELDS 1110
#define IDC_STATUS 1111
#define IDC_ADD 1112
#define IDC_COPY 1113
#define IDC_DELETE 1114
#define IDC_CHOOSE 1115
#define IDC_COMPACT 1116
#define IDC_IMPORT 1117
#define IDC_SELECT_USERS 1118
#define IDC_ASSIGN 1119
#define IDC_PICK 1120

#define IDC_LOOK_BELOW 1201
#define IDC_LOOK_ROWS 1202
#define IDC_LOOK_STATUS 1203
#define IDC_LOOK_CHOOSE 1204

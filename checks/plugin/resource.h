// Numbers of the dialogs of the plug-in, for C++ and the resource compiler.
#pragma once

#define IDD_CHECK_PANEL 101
#define IDD_CHECK 102

#define IDC_CHECK_SCENE 1001
#define IDC_CHECK_COUNTS 1002

#define IDC_TARGET_LABEL 1101
#define IDC_TARGET 1102
#define IDC_OWN_FILE 1103
#define IDC_RUN 1104
#define IDC_STOP 1105
#define IDC_PROGRESS 1106
#define IDC_ERRORS 1107
#define IDC_WARNINGS 1108
#define IDC_HINTS 1109
#define IDC_GROUPED 1110
#define IDC_RULE_LABEL 1111
#define IDC_RULE 1112
#define IDC_FILTER_LABEL 1113
#define IDC_FILTER 1114
#define IDC_FINDINGS 1115
#define IDC_STATUS 1116
#define IDC_FOLLOW 1117
#define IDC_GO_TO 1118
#define IDC_MEND 1119
#define IDC_MEND_ALL 1120
#define IDC_COPY 1121
#define IDC_SAVE 1122
#define IDC_QUERY_LABEL 1123
#define IDC_QUERY 1124
#define IDC_SELECT_FOUND 1125

// Ids of the test program's resources.
#pragma once

#define IDD_FORM 300
#define IDD_VALUES 301
#define IDC_NAME 1001
#define IDC_COUNT 1002
#define IDC_FLAG 1003
#define IDC_PICTURE 1004
#define IDC_APPLY 1005
#define IDC_OTHER_PICTURE 1006
#define IDS_HIERARCHY 400
#define IDS_VALUE 401
#define IDS_GERMAN 501

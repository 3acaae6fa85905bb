// Numbers of the sample plug-in's resources.
#ifndef SAMPLE_PLUGIN_IDS_H
#define SAMPLE_PLUGIN_IDS_H

#define IDD_SAMPLE_PAGE 116
#define IDD_SAMPLE_FORM 101
#define IDC_SAMPLE_OPEN 1003
#define IDC_SAMPLE_NAME 1004
#define IDC_SAMPLE_TREE 1100
#define IDC_SAMPLE_EXPAND 1123

#endif

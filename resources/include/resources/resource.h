#pragma once

// The numbers of the module's resources. The resource compiler reads this file too, and it knows
// the preprocessor but no C++, hence plain #defines. Scripts and sibling plug-ins look controls up
// by these numbers, so a number never changes its meaning once given.

// Dialogs.
#define IDD_HIERARCHY 101  // the browser form
#define IDD_PANEL 116      // the rollup page in the host's utility panel
#define IDD_SWITCH 200     // the switch mask editor
#define IDD_ABOUT 202      // the about box

// Controls of the utility panel. Its close button is IDOK.
#define IDC_BROWSER 1003
#define IDC_LOD_MORE 1004
#define IDC_LOD_LESS 1005
#define IDC_LOD_MOST 1006
#define IDC_LOD_LEAST 1007
#define IDC_ABOUT 1136

// Controls of the browser form.
#define IDC_FIND 1010
#define IDC_TREE 1011
#define IDC_GRID 1012
#define IDC_SELECT_SET 1015
#define IDC_DOWN 1017
#define IDC_UP 1018
#define IDC_NAME 1093
#define IDC_ITEM_SPIN 1095
#define IDC_GLOBAL 1096
#define IDC_CREATE 1100
#define IDC_CREATE_KIND 1101
#define IDC_COMMENT 1104
#define IDC_TOOL 1118
#define IDC_SELECT_GET 1119
#define IDC_REFRESH 1120
#define IDC_EXPAND 1123
#define IDC_COLLAPSE 1124
#define IDC_SEPARATOR_1 1129
#define IDC_SEPARATOR_2 1130
#define IDC_SEPARATOR_3 1131
#define IDC_TREE_GROUP 1132
#define IDC_PROPERTY_GROUP 1133
#define IDC_SEPARATOR_4 1134
#define IDC_SUBTREE 1135
#define IDC_SEARCH 1140  // this and the next exist once the search line has been opened
#define IDC_SEARCH_COUNT 1141
#define IDC_SELECTED_COUNT 1142  // in the tree's frame, once several items have been selected

// Controls of the switch mask editor.
#define IDC_MASK_INDEX 1106
#define IDC_MASK_SPIN 1107
#define IDC_MASK 1108
#define IDC_MASK_NEW 1112
#define IDC_MASK_DELETE 1113
#define IDC_MASK_CLEAR 1114
#define IDC_MASK_SET 1115
#define IDC_MASK_INVERT 1116
#define IDC_SHOW_MASK 1134  // shares its number with a separator of the browser form

// Controls of the about box.
#define IDC_ABOUT_VERSION 1137
#define IDC_ABOUT_BUILD 1138
#define IDC_ABOUT_PICTURE 1139

// The commands of the browser form's system menu; the system uses the lowest four bits itself.
#define IDM_ABOUT 0x0010
#define IDM_FOLLOW 0x0020

// Strings.
#define IDS_LIBRARY_DESCRIPTION 30665
#define IDS_FORM_TITLE 30666
#define IDS_GRID_ATTRIBUTE 30667
#define IDS_GRID_VALUE 30668
#define IDS_CLASS_NAME 30669
#define IDS_ATTACH_BELOW_CHILD 30670
#define IDS_ATTACH_TO_FACE 30671
#define IDS_NO_RECORD_SELECTED 30672
#define IDS_NO_FIELD_SELECTED 30673
#define IDS_SELECTION_NEEDED 30674
#define IDS_CREATE_BELOW_FACE 30676
#define IDS_KIND_FIRST 30677  // the kind names follow each other in the order of the tree's icons
#define IDS_KIND_GROUP 30677
#define IDS_KIND_OBJECT 30678
#define IDS_KIND_LOD 30679
#define IDS_KIND_SWITCH 30680
#define IDS_KIND_DOF 30681
#define IDS_KIND_XREF 30682
#define IDS_KIND_BSP 30683
#define IDS_KIND_CLIP 30684
#define IDS_KIND_LIGHT_POINT 30685
#define IDS_KIND_LIGHT_SOURCE 30686
#define IDS_KIND_HEADER 30687
#define IDS_KIND_SCENE_ROOT 30688
#define IDS_KIND_OMNI_LIGHT 30689
#define IDS_KIND_SPOT_LIGHT 30690
#define IDS_KIND_FACE 30691
#define IDS_KIND_INSTANCE_DEFINITION 30692
#define IDS_KIND_INSTANCE_REFERENCE 30693
#define IDS_KIND_PLAIN 30694  // has no string: a node without a record shows no kind name
#define IDS_NO_PARENT_SELECTED 30695
#define IDS_SWITCH_WITHOUT_CHILDREN 30696
#define IDS_SWITCH_TOO_LARGE 30697
#define IDS_ABOUT_COMMAND 30698
#define IDS_SCENE_ROOT 30699  // this and the next are the same in every language
#define IDS_NO_RECORD 30700
#define IDS_SEARCH_HINT 30701
#define IDS_MENU_RENAME 30702
#define IDS_MENU_CREATE_BELOW 30703
#define IDS_MENU_CREATE_BESIDE 30704
#define IDS_MENU_CUT 30705
#define IDS_MENU_COPY 30706
#define IDS_MENU_PASTE 30707
#define IDS_MENU_DUPLICATE 30708
#define IDS_MENU_DELETE 30709
#define IDS_MENU_SELECT 30710
#define IDS_MENU_SELECT_CHILDREN 30711
#define IDS_MENU_SELECT_PARENTS 30712
#define IDS_MENU_SELECT_SAME_KIND 30713
#define IDS_MENU_EXPAND_TO 30714
#define IDS_MENU_ALL_LEVELS 30715
#define IDS_MENU_FIND 30716
#define IDS_MENU_COPY_VALUE 30717
#define IDS_MENU_COPY_ROW 30718
#define IDS_MENU_RESET_VALUE 30719
#define IDS_MENU_FOLLOW 30720
#define IDS_SELECTED_COUNT 30721
#define IDS_SELECTED_HIDDEN 30722
#define IDS_FOUND_COUNT 30723
#define IDS_SECTION_TRANSLATION 30724
#define IDS_SECTION_SCALE 30725
#define IDS_SECTION_ROLL 30726
#define IDS_SECTION_PITCH 30727
#define IDS_SECTION_YAW 30728
#define IDS_SECTION_GENERAL 30729
#define IDS_SECTION_INTENSITY 30730
#define IDS_SECTION_DISABLED 30731
#define IDS_SECTION_SIZE 30732
#define IDS_SECTION_DIRECTION 30733
#define IDS_SECTION_ANIMATION 30734
#define IDS_SECTION_DRAWING 30735
#define IDS_SECTION_VISIBILITY 30736
#define IDS_SECTION_AXIS 30737
#define IDS_SECTION_CORNER 30738
#define IDS_SECTION_PLANES 30739
#define IDS_SECTION_PLANE 30740
#define IDS_MEANING_WHOLE 30741
#define IDS_MEANING_NUMBER 30742
#define IDS_MEANING_RANGE 30743
#define IDS_MEANING_UNIT 30744
#define IDS_MEANING_TEXT 30745
#define IDS_MEANING_CHOICE 30746
#define IDS_MEANING_YES_NO 30747
#define IDS_MEANING_READ_ONLY 30748
#define IDS_MEANING_DIFFERS 30749
#define IDS_MEANING_COLOR 30750
#define IDS_UNIT_DATABASE 30751
#define IDS_UNIT_DEGREES 30752
#define IDS_UNIT_SECONDS 30753
#define IDS_UNIT_PIXELS 30754
#define IDS_HELP_REFRESH 30755
#define IDS_HELP_UP 30756
#define IDS_HELP_DOWN 30757
#define IDS_HELP_EXPAND 30758
#define IDS_HELP_COLLAPSE 30759
#define IDS_HELP_SELECT_GET 30760
#define IDS_HELP_SELECT_SET 30761
#define IDS_HELP_FIND 30762
#define IDS_HELP_SUBTREE 30763
#define IDS_HELP_TOOL 30764
#define IDS_HELP_GLOBAL 30765
#define IDS_HELP_CREATE 30766
#define IDS_HELP_CREATE_KIND 30767
#define IDS_HELP_TREE 30768
#define IDS_HELP_NAME 30769
#define IDS_HELP_ITEM_SPIN 30770
#define IDS_HELP_COMMENT 30771
#define IDS_HELP_GRID 30772
#define IDS_MENU_FOLD 30773
#define IDS_MENU_UNFOLD 30774
#define IDS_MENU_FOLD_ALL 30775
#define IDS_MENU_UNFOLD_ALL 30776
#define IDS_HELP_MASK 30777
#define IDS_HELP_MASK_INDEX 30778
#define IDS_HELP_MASK_SPIN 30779

// The tree's icons, 16 x 15 pixels, white is transparent.
#define IDB_GROUP 123
#define IDB_OBJECT 124
#define IDB_LOD 125
#define IDB_SWITCH 126
#define IDB_DOF 127
#define IDB_FACE 128
#define IDB_OVERLAY 129
#define IDB_XREF 195
#define IDB_HEADER 196
#define IDB_LIGHT_SOURCE 197
#define IDB_OMNI_LIGHT 198
#define IDB_SCENE_ROOT 199
#define IDB_SPOT_LIGHT 200
#define IDB_LIGHT_POINT 201
#define IDB_BSP 206
#define IDB_CLIP 207
#define IDB_PLAIN 219
#define IDB_INSTANCE_REFERENCE 222
#define IDB_INSTANCE_DEFINITION 223

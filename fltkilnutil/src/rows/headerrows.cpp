// The rows of the header.
#include "attrrow.h"

#include <quillon/fltheader.h>

namespace fltkilnutil {

namespace {

using Type = FltAttrType;
using Width = FltAttrWidth;

constexpr EnumRow kRevisions[] = {{11, 101},   {12, 102},   {14, 103},   {1420, 104}, {1500, 105},
                                  {1510, 106}, {1520, 107}, {1540, 108}, {1550, 109}, {1551, 110},
                                  {1560, 111}, {1570, 112}, {1580, 113}};
constexpr EnumRow kUnits[] = {{0, 116}, {1, 117}, {4, 118}, {5, 119}, {8, 120}};
// Geocentric stands before geodetic: the order of the drop-down list that users know.
constexpr EnumRow kProjections[] = {{0, 121}, {1, 122}, {2, 123}, {3, 124},
                                    {4, 125}, {6, 126}, {5, 127}};
constexpr EnumRow kEllipsoids[] = {{0, 128}, {1, 129}, {2, 130}, {3, 131}, {4, 132}};

constexpr AttrRow kHeaderRows[] = {
    {133, "FltVersion", record<&FltHeader::formatRevision>, Type::Enumeration, Width::Int32,
     "OpenFlight_15.8", 0, kRevisions},
    {134, "FltUnits", record<&FltHeader::vertexCoordinateUnits>, Type::Enumeration, Width::Int8,
     "Meters", 0, kUnits},
    {135, "FltProjection", record<&FltHeader::projectionType>, Type::Enumeration, Width::Int32,
     "Flat_Earth", 0, kProjections},
    {136, "FltEllipsoid", record<&FltHeader::earthEllipsoidModel>, Type::Enumeration, Width::Int32,
     "WGS_84", 0, kEllipsoids},
    {137, "FltOriginLat", record<&FltHeader::originLatitude>, Type::Double, Width::Float64, "0.0"},
    {138, "FltOriginLon", record<&FltHeader::originLongitude>, Type::Double, Width::Float64, "0.0"},
    {139, "FltUpperLam", record<&FltHeader::lambertUpperLatitude>, Type::Double, Width::Float64,
     "45.0"},
    {140, "FltLowerLam", record<&FltHeader::lambertLowerLatitude>, Type::Double, Width::Float64,
     "33.0"},
    {141, "FltTexWhite", record<&FltHeader::textureWhite>, Type::Boolean, Width::Int8, "0"},
};

}  // namespace

constinit const GroupRow kHeaderGroup = groupRow<FltHeader>(142, kHeaderRows);

}  // namespace fltkilnutil

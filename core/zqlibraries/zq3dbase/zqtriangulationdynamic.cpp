#include "zq3dbase/zqtriangulationdynamic.h"

ZqTriangulationDynamic::~ZqTriangulationDynamic() = default;

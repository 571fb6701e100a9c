#include "host/output/OmStringCell.h"

#include "host/output/OmMemoryRegion.h"

OmCellText* OmStringCell::Clone(OmMemoryRegion& region) const { return region.Make<OmStringCell>(fText); }

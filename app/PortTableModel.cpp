#include "app/PortTableModel.h"

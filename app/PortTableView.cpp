#include "app/PortTableView.h"

#include "app/ModelOutlineView.h"

#include "app/ModelOutlineModel.h"

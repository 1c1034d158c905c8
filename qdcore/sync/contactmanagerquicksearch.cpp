#include "contactmanagerquicksearch.h"

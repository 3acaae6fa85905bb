#include <kiln/host/host.h>

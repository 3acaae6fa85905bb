// Everything that an application needs to be the host.
#pragma once

#include <kiln/host/core.h>
#include <kiln/host/diagnostics.h>
#include <kiln/host/history.h>
#include <kiln/host/hostwindow.h>
#include <kiln/host/module.h>
#include <kiln/host/script.h>
#include <kiln/host/status.h>
#include <kiln/kiln.h>

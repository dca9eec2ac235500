#include "mainwindow/channel.h"

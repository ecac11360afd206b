#pragma once
// What the tests of the communications dialogs share: a map over made-up ports, and the dialog
// helpers (rows clicked where a person clicks them, modal dialogs answered).
#include <QApplication>
#include <QTest>
#include <QTreeWidget>

#include <meridex/ui/frame/ImageKeys.h>

#include "CommsTestSupport.h"
#include "DialogTest.h"

#pragma once
// Shows the model's open panels with the platform's file dialog.
#include "model/openpanels.h"

class QWidget;

// A FileChooser whose dialogs are modal to parent (which may be null).
FileChooser fileDialogChooser(QWidget *parent);

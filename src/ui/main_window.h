// The operator's control strip: starts and stops the receiver, opens the tool windows, shows green or red.
// GUI thread only.
#pragma once

// Makes the window, stores it in MainWindowHandle and shows it. The receiver starts by itself as soon as
// messages are dispatched: the window posts itself the click of its start button. Its end stops the
// receiver, saves the settings and ends the message loop. False: the system refused to make it.
bool OpenMainWindow(int showCommand);

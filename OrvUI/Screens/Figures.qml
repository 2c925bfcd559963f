import OrvLauncher.Screens

// A text with numbers in it, which stand in columns and do not push what is beside them as they change.
Label {
    font: Theme.figures(role)
}

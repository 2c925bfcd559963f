import WidgetKit

@_cdecl("orvReloadWidgets")
public func reloadWidgets() {
    WidgetCenter.shared.reloadAllTimelines()
}

#pragma once

namespace lanmira {

class ImageDocument;
class ImageNavigator;
class ZoomGeometry;
struct CommandState;

// When each of the viewer's commands is enabled or checked.
class ViewerCommands {
public:
    // Fills in the state of the viewer's own commands; false for any other command.
    static bool update(int id, CommandState& state, const ImageDocument& document,
                       const ImageNavigator& navigator, const ZoomGeometry& zoom, int trackMode);
};

} // namespace lanmira

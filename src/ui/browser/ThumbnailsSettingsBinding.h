#pragma once

class AppSettings;
class FileCollectionModel;
class QLabel;
class ThumbnailGridView;
class WindowSettings;

// Keeps a thumbnails pane in step with the settings it follows: each function applies the settings
// now and again whenever one of them changes, for as long as the object it sets lives.
namespace ThumbnailsSettingsBinding {
// The window's sort, filter and folder depth, applied to the files the pane shows.
void bindCollection(WindowSettings *settings, FileCollectionModel *collection);
// The grid's colours, outline, shadow and alignment, and whether a click on a name edits it.
// `notice` is the text shown over the grid, written on the grid's background.
void bindGrid(AppSettings *settings, ThumbnailGridView *grid, QLabel *notice);
} // namespace ThumbnailsSettingsBinding

// The names of the drawing library's types, for headers that do not include it.
#pragma once

// NOLINTBEGIN(bugprone-reserved-identifier): these are their names.
using cairo_t = struct _cairo;
using cairo_matrix_t = struct _cairo_matrix;
using cairo_surface_t = struct _cairo_surface;
using PangoLayout = struct _PangoLayout;
// NOLINTEND(bugprone-reserved-identifier)

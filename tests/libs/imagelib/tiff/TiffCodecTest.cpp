// Tests for the Tiff codec come with its implementation.

// Tests for the Jpeg codec come with its implementation.

// Tests for the Gif codec come with its implementation.

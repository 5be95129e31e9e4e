// Tests for the Webp codec come with its implementation.

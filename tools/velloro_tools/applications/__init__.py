"""Real applications in a root of their own, and the dictation into each of them."""

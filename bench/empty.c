/* What starting any program costs that is linked to the gateway's libraries. */
int main(void) {
    return 0;
}
